#pragma once

#include <QString>

namespace quillon::cli
{

enum class Language { Japanese, English };

/// The manual page of the program, made from the table of verbs.
QString manPage(Language language);

} // namespace quillon::cli
