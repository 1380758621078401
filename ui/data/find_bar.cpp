#include "ui/data/find_bar.h"

#include "app/base/reporting.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/may_act.h"
#include "ui/widgets/one_line_input.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/wait_cursor.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr std::size_t MostPlaces = 100'000;
constexpr std::size_t MostMarks = 1000; // at once; more would make every stroke of the brush slow
constexpr int Rest = 200;               // milliseconds

} // namespace

FindBar::FindBar(Reporting& reporting, QPlainTextEdit& text, QWidget* parent)
    : QWidget(parent), m_reporting(reporting), m_text(text), m_field(new QLineEdit(this)),
      m_count(new QLabel(this))
{
    setObjectName(u"findBar"_s);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(u"検索:"_s, this);
    label->setObjectName(u"lblFindInText"_s);
    row->addWidget(label);
    m_field->setObjectName(u"txtFindInText"_s);
    m_field->setToolTip(u"本文から検索する文字列。Enter で次へ、Shift + Enter で前へ移ります。"_s);
    keepInputOnOneLine(*m_field);
    m_field->installEventFilter(this);
    label->setBuddy(m_field);
    row->addWidget(m_field, 1);
    m_controls << m_field;
    const auto addButton = [&](const QString& name, const QString& caption, const QString& toolTip,
                               auto act) {
        auto* button = new QPushButton(caption, this);
        button->setObjectName(name);
        button->setToolTip(toolTip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this,
                eventSlot(m_reporting, name + u"_Click"_s, [button, act] {
                    if (mayActOn(*button))
                        act();
                }));
        row->addWidget(button);
        m_controls << button;
    };
    addButton(u"cmdFindPrevious"_s, u"前へ"_s, u"Shift + F3"_s, [this] { goOn(true); });
    addButton(u"cmdFindNext"_s, u"次へ"_s, u"F3"_s, [this] { goOn(false); });
    m_count->setObjectName(u"lblFindCount"_s);
    m_count->setTextFormat(Qt::PlainText);
    m_count->setMinimumWidth(fontMetrics().horizontalAdvance(u"100000 件以上"_s));
    row->addWidget(m_count);
    addButton(u"cmdFindClose"_s, u"閉じる"_s, u"Esc"_s, [this] { close(); });
    hide();

    m_later.setSingleShot(true);
    m_later.setInterval(Rest);
    connect(&m_later, &QTimer::timeout, this, eventSlot(m_reporting, u"txtFindInText_Change"_s, [this] {
        refresh();
        markPlaces();
        showCount();
    }));
    connect(m_field, &QLineEdit::textChanged, this, eventSlot(m_reporting, u"txtFindInText_Change"_s, [this] {
                forgetPlaces();
                select(From::Here);
            }));
    connect(&m_text, &QPlainTextEdit::textChanged, this, &FindBar::forgetPlaces);
}

void FindBar::open()
{
    const QString selected = m_text.textCursor().selectedText();
    const bool isOneLine = !selected.isEmpty() && !selected.contains(QChar(QChar::ParagraphSeparator));
    show();
    if (isOneLine)
        m_field->setText(selected);
    m_field->selectAll();
    m_field->setFocus(Qt::ShortcutFocusReason);
    refresh();
    markPlaces();
    showCount();
}

void FindBar::showFirst(const QString& wanted)
{
    {
        const QSignalBlocker quiet(m_field);
        m_field->setText(wanted);
    }
    forgetPlaces();
    refresh();
    if (m_places.empty()) {
        // A bar that is open already must not go on telling of what it searched before.
        markPlaces();
        showCount();
        return;
    }
    show();
    m_text.moveCursor(QTextCursor::Start);
    select(From::Here);
}

void FindBar::goOn(bool backwards)
{
    PersonsInput::ofApplication().composition().confirm();
    if (m_field->text().isEmpty()) {
        open();
        return;
    }
    show();
    select(backwards ? From::Before : From::Behind);
}

void FindBar::close()
{
    hide();
    m_text.setExtraSelections({});
    m_text.setFocus(Qt::OtherFocusReason);
}

void FindBar::forgetPlaces()
{
    m_known = false;
    if (isVisible())
        m_later.start();
}

void FindBar::refresh()
{
    m_later.stop();
    if (m_known)
        return;
    const WaitCursor cursor;
    m_places = placesOf(m_field->text(), m_text.document()->toRawText(), MostPlaces);
    m_current = m_places.size();
    m_known = true;
}

void FindBar::select(From from)
{
    refresh();
    const QTextCursor cursor = m_text.textCursor();
    const qsizetype start = from == From::Behind ? cursor.selectionEnd() : cursor.selectionStart();
    const auto behind = std::partition_point(m_places.begin(), m_places.end(),
                                             [&](const TextPlace& place) { return place.from < start; });
    if (!m_places.empty()) {
        auto found = behind;
        if (from == From::Before)
            found = (behind == m_places.begin() ? m_places.end() : behind) - 1;
        else if (behind == m_places.end())
            found = m_places.begin();
        m_current = static_cast<std::size_t>(found - m_places.begin());
        QTextCursor place(m_text.document());
        place.setPosition(static_cast<int>(found->from));
        place.setPosition(static_cast<int>(found->from + found->length), QTextCursor::KeepAnchor);
        m_text.setTextCursor(place);
        m_text.ensureCursorVisible();
    }
    markPlaces();
    showCount();
}

void FindBar::markPlaces()
{
    if (!isVisible() && !isVisibleTo(parentWidget()))
        return;
    // Those around the present one, the colours between those of the text and of the selection.
    const std::size_t middle = std::min(m_current, m_places.size());
    const std::size_t first = middle > MostMarks / 2 ? middle - MostMarks / 2 : 0;
    const std::size_t last = std::min(first + MostMarks, m_places.size());
    QTextCharFormat mark;
    const QPalette palette = m_text.palette();
    mark.setBackground(palette.brush(QPalette::Inactive, QPalette::Highlight));
    mark.setForeground(palette.brush(QPalette::Inactive, QPalette::HighlightedText));
    mark.setFontUnderline(true); // told by more than a colour
    QList<QTextEdit::ExtraSelection> marks;
    for (std::size_t i = first; i < last; ++i) {
        if (i == m_current)
            continue; // the selection itself
        QTextCursor place(m_text.document());
        place.setPosition(static_cast<int>(m_places[i].from));
        place.setPosition(static_cast<int>(m_places[i].from + m_places[i].length), QTextCursor::KeepAnchor);
        marks.append({place, mark});
    }
    m_text.setExtraSelections(marks);
}

void FindBar::showCount()
{
    if (m_field->text().isEmpty())
        m_count->clear();
    else if (m_places.empty())
        m_count->setText(u"見つかりません"_s);
    else if (m_places.size() >= MostPlaces)
        m_count->setText(QString::number(m_places.size()) + u" 件以上"_s);
    else if (m_current < m_places.size())
        m_count->setText(QString::number(m_current + 1) + u" / "_s + QString::number(m_places.size()));
    else
        m_count->setText(QString::number(m_places.size()) + u" 件"_s);
}

bool FindBar::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const auto& key = static_cast<const QKeyEvent&>(*event);
    if (PersonsInput::ofApplication().composition().takes(*m_field, key))
        return true;
    switch (key.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        handleEvent(m_reporting, u"txtFindInText_KeyPress"_s,
                    [&] { goOn(key.modifiers().testFlag(Qt::ShiftModifier)); });
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    // It comes from whatever in the bar has the keyboard, and goes no further: the window would close too.
    if (event->key() != Qt::Key_Escape) {
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
    if (!event->isAutoRepeat())
        close();
}

} // namespace quillon
