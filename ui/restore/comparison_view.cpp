#include "ui/restore/comparison_view.h"

#include "core/lost_things.h"
#include "core/text_difference.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/read_only_text.h"
#include "ui/widgets/report_list.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSplitter>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// So much of a text is shown; all of it comes back.
constexpr qsizetype MostShown = 200'000;

/// A text as a field for texts counts its places.
QString shown(QString text)
{
    text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
    const qsizetype more = text.size() - MostShown;
    if (more > 0)
        text = text.first(MostShown) +
               u"\n… (以下 %1 文字は表示されていません。戻すときは全文が戻ります。)"_s.arg(more);
    return text;
}

QString wordFor(const QString& before, const std::optional<QString>& now)
{
    if (!now)
        return u"現在なし"_s;
    return *now == before ? u"同じ"_s : u"異なる"_s;
}

QString numbersOf(const std::vector<int>& lines)
{
    constexpr std::size_t Most = 5;
    QStringList numbers;
    for (std::size_t i = 0; i < lines.size() && i < Most; ++i)
        numbers << QString::number(lines[i]);
    if (lines.empty())
        return u"なし"_s;
    return numbers.join(u'、') + (lines.size() > Most ? u" …"_s : QString()) + u" 行目"_s;
}

QPlainTextEdit* addText(QBoxLayout& column, const QString& name, const QString& labelName,
                        const QString& label, QWidget* parent)
{
    auto* text = new ShownText(parent);
    text->setObjectName(name);
    text->setTabChangesFocus(true);
    // Without a cursor the keyboard could not reach what lies below.
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    const int line = text->fontMetrics().height(); // and about as wide as a full-width character
    text->setMinimumSize(6 * line, 4 * line);
    column.addWidget(plainLabel(labelName, label, text, parent));
    column.addWidget(text, 1);
    return text;
}

void mark(QPlainTextEdit& text, const std::vector<TextSpan>& spans)
{
    const QPalette& colours = text.palette();
    QColor behind = colours.color(QPalette::Highlight);
    constexpr int Faint = 70; // so that the text's own colour stays readable in every palette
    behind.setAlpha(Faint);
    QList<QTextEdit::ExtraSelection> marks;
    for (const TextSpan& span : spans) {
        QTextEdit::ExtraSelection selection;
        selection.cursor = QTextCursor(text.document());
        selection.cursor.setPosition(static_cast<int>(span.begin));
        selection.cursor.setPosition(static_cast<int>(span.begin + span.length), QTextCursor::KeepAnchor);
        selection.format.setBackground(behind);
        selection.format.setFontUnderline(true);
        marks.push_back(selection);
    }
    text.setExtraSelections(marks);
}

} // namespace

ComparisonView::ComparisonView(Reporting& reporting, QWidget* parent)
    : QWidget(parent), m_reporting(reporting)
{
    arrange();
    connect(lsvFields->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            eventSlot(reporting, u"lsvFields_ItemClick"_s, [this] { showField(); }));
}

void ComparisonView::arrange()
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(0, 0, 0, 0);
    auto* parts = new QSplitter(Qt::Vertical, this);
    parts->setChildrenCollapsible(false);
    rows->addWidget(parts, 1);

    auto* upper = new QWidget(parts);
    auto* fields = new QVBoxLayout(upper);
    fields->setContentsMargins(0, 0, 0, 0);
    lsvFields = new ReportList(m_reporting,
                               {{.header = u"項目"_s},
                                {.header = u"違い"_s, .storage = ReportModel::Storage::Dictionary},
                                {.header = u"失われる前"_s},
                                {.header = u"現在"_s}},
                               upper);
    lsvFields->setObjectName(u"lsvFields"_s);
    lsvFields->setAccessibleName(u"項目一覧"_s);
    lsvFields->setSelectionMode(QAbstractItemView::SingleSelection);
    lsvFields->setColumnCharacters({10, 8, 16, 16});
    lsvFields->giveRoomTo({2, 3});
    fields->addWidget(plainLabel(u"lblFields"_s, u"項目(&I) ："_s, lsvFields, upper));
    fields->addWidget(lsvFields, 1);

    auto* lower = new QWidget(parts);
    auto* texts = new QVBoxLayout(lower);
    texts->setContentsMargins(0, 0, 0, 0);
    lblDifference = plainLabel(u"lblDifference"_s, {}, nullptr, lower);
    lblDifference->setWordWrap(true);
    texts->addWidget(lblDifference);
    auto* sides = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    auto* right = new QVBoxLayout;
    txtBefore = addText(*left, u"txtBefore"_s, u"lblBefore"_s, u"失われる前(&B) ："_s, lower);
    txtNow = addText(*right, u"txtNow"_s, u"lblNow"_s, u"現在(&N) ："_s, lower);
    sides->addLayout(left, 1);
    sides->addLayout(right, 1);
    texts->addLayout(sides, 1);
    parts->setStretchFactor(0, 2);
    parts->setStretchFactor(1, 3);
}

void ComparisonView::show(const LostDetails& details)
{
    m_rows.clear();
    m_isCompared = details.isCompared;
    for (const LostField& field : details.fields)
        m_rows.push_back({.label = field.label, .before = field.before, .now = field.now});
    addRelations(u"リンク"_s, details.links, details.linksNow);
    addRelations(u"分類"_s, details.categories, details.categoriesNow);
    addRelations(u"所属データ"_s, details.members, details.membersNow);
    if (details.notListed > 0)
        m_rows.push_back({.label = u"ほか"_s,
                          .before = u"%1 件は表示されていません。"_s.arg(details.notListed),
                          .now = std::nullopt});

    lsvFields->rows().clear();
    int firstDifferent = -1;
    ReportModel::Fill fill(lsvFields->rows());
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        const Row& row = m_rows[i];
        if (firstDifferent < 0 && row.now != row.before)
            firstDifferent = static_cast<int>(i);
        constexpr qsizetype MostInRow = 200;
        fill.append({row.label, m_isCompared ? wordFor(row.before, row.now) : u"不明"_s,
                     row.before.left(MostInRow), row.now.value_or(QString()).left(MostInRow)});
    }
    fill.finish();
    if (!m_rows.empty())
        lsvFields->selectRow(firstDifferent < 0 ? 0 : firstDifferent);
    showField();
}

void ComparisonView::addRelations(const QString& label, const QStringList& before, const QStringList& now)
{
    if (!before.isEmpty())
        m_rows.push_back({.label = label,
                          .before = before.join(u'\n'),
                          .now = now.isEmpty() ? std::nullopt : std::optional(now.join(u'\n'))});
}

void ComparisonView::clear()
{
    m_rows.clear();
    lsvFields->rows().clear();
    showField();
}

void ComparisonView::showField()
{
    const int number = lsvFields->selectedRow();
    if (number < 0 || static_cast<std::size_t>(number) >= m_rows.size()) {
        txtBefore->clear();
        txtNow->clear();
        lblDifference->clear();
        return;
    }
    // Sorted by a header the rows stand in another order; their labels say which is which.
    const QStringView label = lsvFields->rows().text(number, 0);
    for (const Row& row : m_rows) {
        if (row.label != label)
            continue;
        txtBefore->setPlainText(shown(row.before));
        txtNow->setPlainText(shown(row.now.value_or(QString())));
    }
    markDifferences();
}

void ComparisonView::markDifferences()
{
    const QString before = txtBefore->toPlainText();
    const QString now = txtNow->toPlainText();
    const TextDifference difference = differenceOf(before, now);
    mark(*txtBefore, difference.before);
    mark(*txtNow, difference.now);
    const int number = lsvFields->selectedRow();
    if (number < 0)
        return;
    const QString label = lsvFields->rows().text(number, 0).toString();
    const QString word = lsvFields->rows().text(number, 1).toString();
    lblDifference->setText(word == u"異なる" ? u"%1 ： 異なる部分に下線 (失われる前 %2、現在 %3)"_s.arg(
                                                   label, numbersOf(linesOf(before, difference.before)),
                                                   numbersOf(linesOf(now, difference.now)))
                                             : label + u" ： "_s + word);
}

void ComparisonView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && txtNow != nullptr)
        markDifferences();
}

} // namespace quillon
