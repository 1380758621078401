#pragma once

#include <QString>

#include <vector>

namespace quillon::cli
{

struct Verb;

/// Explains a verb, or the program when there is none, on the standard output.
void printHelp(const Verb* verb);
void printVersion();

/// The lines that a wrong command is answered with.
QString usageOf(const Verb* verb);

/// A line of the list of statuses: what each number means.
struct StatusText {
    int number = 0;
    QString japanese;
    QString english;
};
const std::vector<StatusText>& statusTexts();

} // namespace quillon::cli
