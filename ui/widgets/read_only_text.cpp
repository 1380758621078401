#include "ui/widgets/read_only_text.h"

#include <QAccessibleWidget>
#include <QLineEdit>
#include <QTextBlock>

#include <algorithm>

namespace quillon
{

namespace
{

/// A field whose text can be read. It has no interface for changing it.
class ReadOnlyText : public QAccessibleWidget, public QAccessibleTextInterface
{
public:
    explicit ReadOnlyText(QWidget* field) : QAccessibleWidget(field, QAccessible::EditableText) {}

    void* interface_cast(QAccessible::InterfaceType type) override
    {
        if (type == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.readOnly = true;
        state.selectableText = true;
        return state;
    }
    // What a field is made of is nobody's business.
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QAccessibleInterface* childAt(int /*x*/, int /*y*/) const override { return nullptr; }
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Value ? wholeText() : QAccessibleWidget::text(kind);
    }

    QString text(int start, int end) const override
    {
        return start < end ? wholeText().mid(std::max(start, 0), end - std::max(start, 0)) : QString();
    }
    int characterCount() const override { return static_cast<int>(wholeText().size()); }
    int selectionCount() const override
    {
        int start = 0;
        int end = 0;
        selection(0, &start, &end);
        return start < end ? 1 : 0;
    }
    void addSelection(int start, int end) override { setSelection(0, start, end); }
    void removeSelection(int index) override
    {
        if (index == 0)
            setCursorPosition(cursorPosition());
    }
    void scrollToSubstring(int start, int /*end*/) override { setCursorPosition(start); }
    QString attributes(int offset, int* start, int* end) const override
    {
        *start = offset;
        *end = offset;
        return {};
    }

protected:
    virtual QString wholeText() const = 0;
    int within(int position) const { return std::clamp(position, 0, characterCount()); }
};

class ReadOnlyLine : public ReadOnlyText
{
public:
    explicit ReadOnlyLine(QLineEdit* line) : ReadOnlyText(line) {}

    int cursorPosition() const override { return line().cursorPosition(); }
    void setCursorPosition(int position) override { line().setCursorPosition(within(position)); }
    void selection(int index, int* start, int* end) const override
    {
        const bool isThere = index == 0 && line().hasSelectedText();
        *start = isThere ? line().selectionStart() : 0;
        *end = isThere ? line().selectionEnd() : 0;
    }
    void setSelection(int index, int start, int end) override
    {
        if (index == 0)
            line().setSelection(within(start), within(end) - within(start));
    }
    QRect characterRect(int offset) const override
    {
        const QString shown = wholeText();
        const QFontMetrics metrics = line().fontMetrics();
        const auto before = [&](int position) { return metrics.horizontalAdvance(shown.left(position)); };
        // The field may be scrolled: where its cursor is tells how far.
        QRect place = line().inputMethodQuery(Qt::ImCursorRectangle).toRect();
        place.moveLeft(place.center().x() + before(offset) - before(line().cursorPosition()));
        place.setWidth(before(offset + 1) - before(offset));
        return {line().mapToGlobal(place.topLeft()), place.size()};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return line().cursorPositionAt(line().mapFromGlobal(point));
    }

protected:
    QString wholeText() const override { return line().text(); }

private:
    QLineEdit& line() const { return static_cast<QLineEdit&>(*widget()); }
};

class ReadOnlyDocument : public ReadOnlyText
{
public:
    explicit ReadOnlyDocument(QPlainTextEdit* edit) : ReadOnlyText(edit) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = ReadOnlyText::state();
        state.multiLine = true;
        return state;
    }
    int cursorPosition() const override { return edit().textCursor().position(); }
    void setCursorPosition(int position) override { edit().setTextCursor(cursorAt(position)); }
    void selection(int index, int* start, int* end) const override
    {
        const QTextCursor cursor = edit().textCursor();
        *start = index == 0 && cursor.hasSelection() ? cursor.selectionStart() : 0;
        *end = index == 0 && cursor.hasSelection() ? cursor.selectionEnd() : 0;
    }
    void setSelection(int index, int start, int end) override
    {
        if (index != 0)
            return;
        QTextCursor cursor = cursorAt(start);
        cursor.setPosition(within(end), QTextCursor::KeepAnchor);
        edit().setTextCursor(cursor);
    }
    QRect characterRect(int offset) const override
    {
        const QRect place = edit().cursorRect(cursorAt(offset));
        const QRect next = edit().cursorRect(cursorAt(offset + 1));
        const int width = next.top() == place.top() ? next.left() - place.left() : place.width();
        return {edit().viewport()->mapToGlobal(place.topLeft()), QSize(width, place.height())};
    }
    int offsetAtPoint(const QPoint& point) const override
    {
        return edit().cursorForPosition(edit().viewport()->mapFromGlobal(point)).position();
    }

protected:
    QString wholeText() const override { return edit().toPlainText(); }

private:
    QPlainTextEdit& edit() const { return static_cast<QPlainTextEdit&>(*widget()); }
    QTextCursor cursorAt(int position) const
    {
        QTextCursor cursor(edit().document());
        cursor.setPosition(within(position));
        return cursor;
    }
};

QAccessibleInterface* interfaceOfReadOnly(const QString& className, QObject* object)
{
    if (className == QLatin1StringView("QLineEdit")) {
        auto* line = qobject_cast<QLineEdit*>(object);
        return line != nullptr && line->isReadOnly() ? new ReadOnlyLine(line) : nullptr;
    }
    if (className == QLatin1StringView("QPlainTextEdit")) {
        auto* edit = qobject_cast<QPlainTextEdit*>(object);
        return edit != nullptr && edit->isReadOnly() ? new ReadOnlyDocument(edit) : nullptr;
    }
    return nullptr;
}

} // namespace

ShownText::ShownText(QWidget* parent) : QPlainTextEdit(parent)
{
    setReadOnly(true);
}

void keepReadOnlyFieldsFromOutside()
{
    QAccessible::installFactory(interfaceOfReadOnly);
}

} // namespace quillon
