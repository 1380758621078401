#include "ui/widgets/laid_out_lines.h"

#include <QTextLayout>

#include <algorithm>
#include <utility>

namespace quillon
{

namespace
{

constexpr qsizetype GenerationSize = 1000; // the texts of a few screens

/// Whether a text consists of characters alone whose glyphs stay in their place; marks and foreign letters may not.
bool isCompact(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        const char16_t unit = character.unicode();
        const bool latin = unit >= u' ' && unit <= u'~';
        const bool shortening = unit == u'…';
        const bool kana = unit >= u'\u3000' && unit <= u'\u30FF' && unit != u'\u3099' && unit != u'\u309A';
        const bool kanji = unit >= u'\u4E00' && unit <= u'\u9FFF';
        const bool wideOrNarrow = unit >= u'\uFF01' && unit <= u'\uFF9F';
        return latin || shortening || kana || kanji || wideOrNarrow;
    });
}

LaidOutLine layOut(const QString& text, const QFont& font)
{
    LaidOutLine line;
    line.layout = std::make_unique<QTextLayout>(text, font);
    QTextLayout& layout = *line.layout;
    QTextOption option(Qt::AlignLeft | Qt::AlignAbsolute);
    option.setTextDirection(Qt::LeftToRight);
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.setCacheEnabled(true);
    layout.beginLayout();
    const QTextLine only = layout.createLine();
    layout.endLayout();
    line.width = only.naturalTextWidth();
    line.height = only.height();
    line.compact = isCompact(text);
    return line;
}

} // namespace

LaidOutLines::LaidOutLines() = default;

LaidOutLines::~LaidOutLines() = default;

LaidOutLine& LaidOutLines::line(const QString& text, const QFont& font)
{
    if (font != m_font) {
        m_young.clear();
        m_old.clear();
        m_font = font;
    }
    if (const auto found = m_young.constFind(text); found != m_young.constEnd())
        return **found;
    std::shared_ptr<LaidOutLine> line = m_old.take(text);
    if (line == nullptr)
        line = std::make_shared<LaidOutLine>(layOut(text, font));
    if (m_young.size() >= GenerationSize)
        m_old = std::exchange(m_young, {});
    m_young.insert(text, line);
    return *line;
}

} // namespace quillon
