#pragma once

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QString>

#include <cstddef>
#include <memory>
#include <vector>

namespace quillon
{

/// What a field was loaded with, beside what its widget made of it. Text widgets do not keep every text as it is
/// (line breaks of other kinds, for example); one that the user has not changed comes back as it was loaded.
class KeptText
{
public:
    void keep(const QString& loaded, const QString& asShown);
    const QString& loaded() const { return m_loaded; }
    /// Whether the widget still shows what it showed after loading.
    bool stands(const QString& nowShown) const { return nowShown == m_asShown; }

private:
    QString m_loaded;
    QString m_asShown;
};

/// A field of a data window, of one line or of many.
class TextField
{
public:
    virtual ~TextField() = default;

    /// Replaces the text by that of a datum; what was there cannot be brought back.
    virtual void load(const QString& text) = 0;
    /// Replaces the text on behalf of the person, who can take that back as if it had been typed.
    virtual void replace(const QString& text) = 0;
    /// The text: as loaded when the user has not changed it. What an input method has not confirmed does not count.
    virtual QString content() const = 0;
    virtual QWidget& widget() = 0;
    /// Bytes of the text in code page 932. Counted once for every change of the text.
    qsizetype byteLength() const;

protected:
    virtual qsizetype countBytes() const;
    /// To be called whenever the text has changed.
    void textHasChanged() { m_bytes = Unknown; }

private:
    static constexpr qsizetype Unknown = -1;
    mutable qsizetype m_bytes = Unknown;
};

/// A field of one line.
class TextLine : public QLineEdit, public TextField
{
    Q_OBJECT

public:
    explicit TextLine(QWidget* parent = nullptr);

    void load(const QString& text) override;
    void replace(const QString& text) override;
    QString content() const override;
    QWidget& widget() override { return *this; }

private:
    KeptText m_kept;
};

/// A field of many lines. Tab leaves it, Enter begins a new line.
class TextArea : public QPlainTextEdit, public TextField
{
    Q_OBJECT

public:
    explicit TextArea(QWidget* parent = nullptr);

    void load(const QString& text) override;
    void replace(const QString& text) override;
    QString content() const override;
    QWidget& widget() override { return *this; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    qsizetype countBytes() const override;
    void keyPressEvent(QKeyEvent* event) override;
    /// Ctrl and the wheel make the text larger and smaller, as Ctrl with plus and minus.
    void wheelEvent(QWheelEvent* event) override;

private:
    QString shown() const;
    QSize sizeOf(int characters, int lines) const;
    void zoom(int points);
    /// Counts the bytes of the lines of `added` characters from `from` on.
    void countLines(int from, int added);
    qsizetype bytesShown(bool carriageReturns) const;

    /// A text that came as a whole.
    struct Arrival {
        KeptText kept;
        bool carriageReturns = false; // it ends its lines with CR LF
        bool asShown = true;          // it has as many bytes as what is shown of it
        int undoSteps = 0;            // how many the document had when it had come
    };
    Arrival arrivalOf(const QString& text) const;
    const Arrival& arrival() const { return m_arrivals[m_current]; }
    /// What came last, and still stands, of what has come: undoing takes the present text back behind an arrival.
    void findArrival();
    void forgetUndoneArrivals() { m_arrivals.resize(m_current + 1); }

    std::vector<Arrival> m_arrivals{
        Arrival()}; // the loaded text, and those that replaced it and can be undone
    std::size_t m_current = 0;
    bool m_replacing = false;
    int m_turned = 0; // of the wheel with Ctrl, less than a notch; in eighths of a degree
    std::shared_ptr<qsizetype> m_bytesOfLines = std::make_shared<qsizetype>(0);
};

} // namespace quillon
