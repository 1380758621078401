#include "app/base/platform/code_page.h"
#include "app/base/ports/data_window.h"
#include "bench/bare_database.h"
#include "bench/corpora.h"
#include "bench/pair.h"
#include "bench/quiet_program.h"
#include "core/data_records.h"
#include "ui/widgets/form_window.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPlainTextEdit>

#include <unicode/ucnv.h>

#include <stdexcept>

using namespace Qt::Literals::StringLiterals;

namespace quillon::bench
{

namespace
{

constexpr int Keys = 1001;

/// The beginnings of the corpus's documents, together as long as a document can be.
QString longDocument()
{
    constexpr qsizetype Length = 32'000;
    const BareDatabase database(corpusPath(Corpus::Default));
    BareStatement documents(database, "SELECT Explanation FROM RefDoc");
    QString text;
    while (text.size() < Length && documents.step())
        text += documents.text(0);
    return text.first(Length);
}

/// Converts texts to code page 932.
class Converter
{
public:
    Converter() : m_converter(ucnv_open("ibm-943_P15A-2003", &m_status))
    {
        if (U_FAILURE(m_status))
            throw std::runtime_error("there is no code page 932");
    }
    ~Converter() { ucnv_close(m_converter); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    qsizetype convert(const QString& text)
    {
        m_bytes.resize(text.size() * 2);
        return ucnv_fromUChars(m_converter, m_bytes.data(), static_cast<int32_t>(m_bytes.size()),
                               reinterpret_cast<const UChar*>(text.utf16()),
                               static_cast<int32_t>(text.size()), &m_status);
    }

private:
    UErrorCode m_status = U_ZERO_ERROR;
    UConverter* m_converter;
    QByteArray m_bytes;
};

/// A key as it arrives at a field, from the beginning to the end of its event.
void press(QPlainTextEdit& field, Qt::Key key = Qt::Key_A, const QString& text = u"a"_s)
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&field, &down);
}

/// Takes the last key back and lets the field rest: every key is typed into the same text.
void takeBack(QPlainTextEdit& field)
{
    press(field, Qt::Key_Backspace, u"\b"_s);
    QCoreApplication::processEvents();
}

/// Shows a text in a field and puts the cursor into its middle.
void beginTyping(QPlainTextEdit& field)
{
    field.window()->show();
    QTextCursor cursor = field.textCursor();
    cursor.setPosition(field.document()->characterCount() / 2);
    field.setTextCursor(cursor);
    field.setFocus();
    QCoreApplication::processEvents();
}

/// The program with a document window that holds the long document.
class DocumentWindow
{
public:
    DocumentWindow()
    {
        m_program.open(corpusPath(Corpus::Default));
        CreateRegisterForm(m_program.session(), u"R"_s);
        auto& window = dynamic_cast<FormWindow&>(*m_program.session().windows.loaded().back());
        window.asDataWindow()->setFieldText(2, text);
        field = window.findChild<QPlainTextEdit*>(u"txtFields(2)"_s);
        beginTyping(*field);
        const QTextDocument& document = *field->document();
        m_before = document.characterCount();
    }
    void checkTyped(benchmark::State& state) const
    {
        // The first key was taken back before it was typed: its place is that of a character of the document.
        const QChar last = field->document()->characterAt(field->textCursor().position() - 1);
        if (field->document()->characterCount() != m_before || last != u'a')
            state.SkipWithError("the keys were not taken");
    }

    const QString text = longDocument();
    QPlainTextEdit* field = nullptr;

private:
    QuietProgram m_program;
    int m_before = 0;
};

void typing(benchmark::State& state)
{
    const DocumentWindow document;
    Converter converter;
    measure(state,
            {"Typing a key in a document of 32,000 characters", "one conversion of the text to code page 932",
             1.5},
            {.prepare = [&] { takeBack(*document.field); },
             .operation = [&] { press(*document.field); },
             .prepareFloor = {},
             .floor = [&] { benchmark::DoNotOptimize(converter.convert(document.text)); }});
    document.checkTyped(state);
}
BENCHMARK(typing)->UseManualTime()->Iterations(Keys);

void typingBesideBareField(benchmark::State& state)
{
    const DocumentWindow document;
    QPlainTextEdit bare;
    bare.setPlainText(document.text);
    bare.resize(document.field->size());
    beginTyping(bare);
    document.field->window()->activateWindow();
    measure(state, {"The same", "the key in a bare text field, and counting the text's bytes once"},
            {.prepare = [&] { takeBack(*document.field); },
             .operation = [&] { press(*document.field); },
             .prepareFloor = [&] { takeBack(bare); },
             .floor =
                 [&] {
                     press(bare);
                     benchmark::DoNotOptimize(platform::byteLength932(document.text));
                 }});
    document.checkTyped(state);
}
BENCHMARK(typingBesideBareField)->UseManualTime()->Iterations(Keys);

} // namespace

} // namespace quillon::bench
