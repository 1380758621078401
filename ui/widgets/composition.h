#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

class QEvent;
class QKeyEvent;

namespace quillon
{

/// What an input method shows in a field and has not confirmed yet. The person believes to have typed it: before anything
/// acts on what stands in the fields, or the field loses the keyboard, it is confirmed as it is shown.
/// In a list or tree it is a row that is searched with it. There it is dropped: a command is meant for the row that is
/// selected, not for one that would be.
class Composition
{
public:
    /// To be told of every event of every widget, before the widget is.
    void follow(QWidget& widget, const QEvent& event);

    /// Whether there is one in a widget or in one of those inside it.
    bool isActiveIn(const QWidget& widget) const;

    /// Puts what is shown into the field. Without a composition nothing happens.
    void confirm();

    /// Whether a key in a field ends its composition and means nothing else: Enter confirms it, Esc takes it back. Most
    /// input methods keep these keys to themselves.
    bool takes(const QWidget& field, const QKeyEvent& key);

private:
    QPointer<QWidget> m_field; // null for none
    QString m_text;
};

} // namespace quillon
