#pragma once

#include "store/text_places.h"

#include <QTimer>
#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace quillon
{

struct Reporting;

/// A bar below a field of many lines in which a text is searched in the field, as the full-text search compares. It shows
/// how many places there are and at which of them one is. Enter and Shift+Enter in its field go on and back, Esc anywhere
/// in it closes it.
class FindBar : public QWidget
{
    Q_OBJECT

public:
    /// `text`: the field that is searched; it outlives the bar. A lack of memory in searching it is reported.
    FindBar(Reporting& reporting, QPlainTextEdit& text, QWidget* parent);

    /// What the Tab key goes through, in this order.
    const QList<QWidget*>& controls() const { return m_controls; }

    /// Shows the bar and goes into its field: with what is selected in the text, else with what was searched last.
    void open();
    /// Shows the first place of a text that was searched elsewhere, with the bar, if there is one; else a bar that is
    /// open says so. The keyboard stays where it is.
    void showFirst(const QString& wanted);
    /// Selects the next place or the one before, beginning anew at the ends. With nothing to search the bar is opened.
    void goOn(bool backwards);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    enum class From { Here, Behind, Before };

    void close();
    /// Looks for the places again when the text or what is searched has changed.
    void refresh();
    void select(From from);
    void markPlaces();
    void showCount();
    void forgetPlaces();

    Reporting& m_reporting;
    QPlainTextEdit& m_text;
    QLineEdit* m_field;
    QLabel* m_count;
    QList<QWidget*> m_controls;
    std::vector<TextPlace> m_places;
    std::size_t m_current = 0; // of the places; one behind them: none is selected
    bool m_known = false;      // the places are those of the present text
    QTimer m_later;            // until the text, or what is typed, has come to rest
};

} // namespace quillon
