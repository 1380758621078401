#pragma once

#include <QString>

#include <vector>

namespace quillon::corpus
{

/// The words and sentence patterns that all texts are made of. Every character exists in code page 932.
struct Vocabulary {
    std::vector<QString> kanji;      // nouns of one to four characters
    std::vector<QString> katakana;   // loan words
    std::vector<QString> hiragana;   // native nouns
    std::vector<QString> latin;      // abbreviations and names
    std::vector<QString> suffixes;   // what makes a term of a noun
    std::vector<QString> prefixes;   // the same in front
    std::vector<QString> adjectives; // before a noun
    std::vector<QString> verbs;      // verbal nouns that take する
    std::vector<QString> connectors; // openings of sentences, with their comma
    std::vector<QString> places;
    std::vector<QString> extensions; // of files, with the dot
    /// Sentences: %n a noun, %v a verbal noun, %a an adjective, %p a place, %d a small number, %y a year, %l Latin.
    std::vector<QString> sentences;
    /// Beginnings of definitions, about the term that is defined.
    std::vector<QString> definitions;
};

const Vocabulary& vocabulary();

/// Katakana and the marks around them in their half-width forms; a voiced one becomes two characters.
QString halfWidthKatakana(const QString& text);
/// Latin letters and digits in their full-width forms.
QString fullWidthLatin(const QString& text);

} // namespace quillon::corpus
