// Patterns of `Like` against texts: a line for the pattern, the rest is the text.
#include "store/like_pattern.h"
#include "store/text_fold.h"
#include "tests/fuzz/fuzz.h"

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString input = textOf(data, size);
    const QString pattern = input.section(u'\n', 0, 0);
    const QString text = input.section(u'\n', 1);
    for (const auto comparing : {LikePattern::Comparing::Exactly, LikePattern::Comparing::AsAReader}) {
        const LikePattern like(pattern, comparing);
        const bool matches = like.matches(text);
        // A text that a pattern finds in whole is found as a part, too.
        if (matches)
            require(LikePattern(u'*' + pattern + u'*', comparing).matches(text) || pattern.contains(u'['),
                    "stars around a pattern lose nothing");
    }
    // Whatever has no special meaning matches itself.
    static const QString special = u"*?#[]"_s;
    const bool isPlain =
        std::none_of(text.begin(), text.end(), [](QChar unit) { return special.contains(unit); });
    if (isPlain) {
        require(LikePattern(text, LikePattern::Comparing::Exactly).matches(text),
                "a plain text matches itself");
        require(LikePattern(text, LikePattern::Comparing::AsAReader).matches(text),
                "a plain text reads like itself");
    }
    return 0;
}
