#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace quillon
{

/// A pattern of `Like`: "*" any run, "?" one character, "#" one digit, "[list]" and "[!list]" with ranges.
/// A "[" that is never closed stands for itself. Characters are whole code points.
class LikePattern
{
public:
    enum class Comparing { Exactly, AsAReader };

    /// `Exactly` compares code points, `AsAReader` folds case, width and kana type on both sides.
    LikePattern(const QString& pattern, Comparing comparing);

    /// Whether the whole of `text` matches. Linear in the text for patterns of one run of characters between stars;
    /// never exponential.
    bool matches(QStringView text) const;
    /// The same for a text that is folded already, where the comparison folds at all.
    bool matchesComparable(QStringView text) const;

private:
    struct Range {
        char32_t first;
        char32_t last;
    };
    struct Element {
        enum class Kind { Character, AnyCharacter, Digit, List, Run };
        Kind kind = Kind::Character;
        char32_t character = 0;
        bool negated = false;
        std::vector<Range> ranges;

        bool accepts(char32_t candidate) const;
    };

    /// What stands between the brackets of a list, such as "!a-z".
    static Element listElement(QStringView list, Comparing comparing);

    Comparing m_comparing;
    std::vector<Element> m_elements;
};

} // namespace quillon
