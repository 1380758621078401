#include "ui/widgets/one_line_input.h"

#include "app/base/one_line.h"

#include <QLineEdit>

#include <algorithm>

namespace quillon
{

namespace
{

/// Where one text differs from another: a stretch between what both begin with and what both end with.
struct Difference {
    Difference(const QString& before, const QString& after)
    {
        const auto most = std::min(before.size(), after.size());
        const auto beginning = std::mismatch(before.begin(), before.begin() + most, after.begin());
        start = beginning.first - before.begin();
        const auto rest = most - start;
        const auto ending = std::mismatch(before.rbegin(), before.rbegin() + rest, after.rbegin());
        const auto same = ending.first - before.rbegin();
        removed = before.size() - start - same;
        added = after.size() - start - same;
    }

    qsizetype start = 0;
    qsizetype removed = 0;
    qsizetype added = 0;
};

/// Watches a field, of which it is a part.
class OneLineInput : public QObject
{
public:
    explicit OneLineInput(QLineEdit& field) : QObject(&field), m_field(field), m_before(field.text())
    {
        connect(&field, &QLineEdit::textEdited, this, [this] { clean(); });
        connect(&field, &QLineEdit::textChanged, this, [this] { m_before = m_field.text(); });
    }

private:
    void clean()
    {
        if (m_cleaning)
            return;
        const QString raw = m_field.text();
        const Difference input(m_before, raw);
        const QString cleaned = onOneLine(raw.mid(input.start, input.added));
        if (cleaned == raw.mid(input.start, input.added))
            return;
        const QString wanted = raw.first(input.start) + cleaned + raw.sliced(input.start + input.added);
        const auto cursor = m_field.cursorPosition() - (input.added - cleaned.size());
        m_cleaning = true;
        // Whoever undoes this later is not to meet the text as it came.
        m_field.undo();
        const Difference change(m_field.text(), wanted);
        m_field.setSelection(static_cast<int>(change.start), static_cast<int>(change.removed));
        m_field.insert(wanted.mid(change.start, change.added));
        m_field.setCursorPosition(static_cast<int>(cursor));
        m_cleaning = false;
    }

    QLineEdit& m_field;
    QString m_before; // the text before the input that is going on
    bool m_cleaning = false;
};

} // namespace

void keepInputOnOneLine(QLineEdit& field)
{
    new OneLineInput(field);
}

} // namespace quillon
