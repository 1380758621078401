// Han characters have their Japanese forms, whatever the system speaks and whatever its theme sets while the program runs.
#include "app/shell/japanese_fonts.h"
#include "app/shell/japanese_interface.h"
#include "core/data_records.h"
#include "tests/auxiliary/search_world.h"

#include <QApplication>
#include <QFontDatabase>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTest>
#include <QWindow>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// What the process takes for its language.
std::string& languageOfProcess()
{
    static std::string language = "C";
    return language;
}

const QString Characters = u"骨直海令角誤扇遍刃"_s;
const QString JapaneseFamily = u"Noto Sans CJK JP"_s;
const QString ChineseFamily = u"Noto Sans CJK SC"_s;
constexpr auto AsRun = "--as-a-run";

QImage drawn(QChar character, QFont font)
{
    constexpr int Size = 48;
    font.setPixelSize(Size);
    font.setBold(false);
    font.setItalic(false);
    QImage image(2 * Size, 2 * Size, QImage::Format_Grayscale8);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(font);
    painter.drawText(image.rect(), static_cast<int>(Qt::AlignCenter), QString(character));
    return image;
}

/// The characters that a font does not draw in their Japanese forms.
QString foreignForms(const QFont& font)
{
    QString foreign;
    for (const QChar character : Characters) {
        if (drawn(character, font) != drawn(character, QFont(JapaneseFamily)))
            foreign += character;
    }
    return foreign;
}

/// What is wrong with the fonts of all controls there are, one line for each kind of them.
QStringList foreignFormsInWindows(const QString& when)
{
    QStringList found;
    QHash<QStringList, QString> known; // by the families of the font
    const auto look = [&](const QString& what, const QFont& font) {
        if (!known.contains(font.families()))
            known.insert(font.families(), foreignForms(font));
        const QString foreign = known.value(font.families());
        const QString line = when + u": "_s + what + u" "_s + foreign;
        if (!foreign.isEmpty() && !found.contains(line))
            found << line;
    };
    const QWidgetList all = QApplication::allWidgets();
    for (const QWidget* widget : all)
        look(QString::fromLatin1(widget->metaObject()->className()), widget->font());
    const QMenu later; // what is made now
    look(u"a new menu"_s, later.font());
    look(u"the application"_s, QApplication::font());
    look(u"a tool tip"_s, QApplication::font("QTipLabel"));
    return found;
}

/// Lets the toolkit take a font for a kind of controls without a word, as it does when a theme changes.
void setSilently(const QFont& font, const char* kind)
{
    struct Silence : QObject {
        bool eventFilter(QObject* /*receiver*/, QEvent* event) override
        {
            return event->type() == QEvent::ApplicationFontChange;
        }
    };
    Silence silence;
    qApp->installEventFilter(&silence);
    QApplication::setFont(font, kind);
}

/// Goes through what may happen to the fonts of a run with windows on the screen.
QStringList foreignFormsOfARun()
{
    setUpJapaneseInterface(*qApp);
    SearchWorld world;
    world.addDocument(u"骨直海令角"_s, u"R-991231-001"_s, Characters);
    world.search(u"骨"_s);
    ShowData(world.session(), u"R-991231-001"_s);
    auto* document = world.window<FormWindow>(u"frmRefDoc"_s);
    if (document == nullptr || world.resultRows().isEmpty())
        return {u"the windows are not there"_s};
    WindowWorld::control<QPushButton>(*document, u"cmdSize(0)"_s)->click();

    QStringList found = foreignFormsInWindows(u"at the start"_s);
    const QFont chinese(ChineseFamily, 11);
    QApplication::setFont(chinese);
    WindowWorld::processEvents();
    found << foreignFormsInWindows(u"after a font of the application"_s);
    if (QApplication::font().pointSize() != chinese.pointSize())
        found << u"the size of the new font is not taken"_s;
    QGuiApplication::setFont(QFont(u"DejaVu Sans"_s, 12));
    WindowWorld::processEvents();
    found << foreignFormsInWindows(u"after a font behind the back of the windows"_s);
    for (const char* kind : {"QMenu", "QLabel", "QAbstractItemView", "QPlainTextEdit"})
        QApplication::setFont(chinese, kind);
    WindowWorld::processEvents();
    found << foreignFormsInWindows(u"after fonts for single kinds"_s);
    for (const char* kind : {"QMenu", "QMenuBar", "QMessageBox", "QTipLabel"})
        setSilently(chinese, kind);
    if (QApplication::font("QTipLabel").families() != chinese.families())
        found << u"no kind has a font of its own in between"_s;
    QEvent change(QEvent::ThemeChange);
    QCoreApplication::sendEvent(world.mainWindow().windowHandle(), &change);
    WindowWorld::processEvents();
    found << foreignFormsInWindows(u"after another theme"_s);
    return found + world.dialogs.takeComplaints();
}

} // namespace

// In place of the system's one, which knows the installed languages only.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's name is reserved
extern "C" char* setlocale(int /*category*/, const char* wanted) noexcept
{
    const char* installed = std::getenv("LANG");
    if (wanted != nullptr && *wanted == '\0')
        languageOfProcess() = installed != nullptr ? installed : "C";
    else if (wanted != nullptr && (installed == nullptr || std::strcmp(wanted, installed) != 0) &&
             *wanted != 'C')
        return nullptr;
    else if (wanted != nullptr)
        languageOfProcess() = wanted;
    return languageOfProcess().data();
}

class TestJapaneseGlyphs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theFormsAreToldApart()
    {
        QVERIFY(QFontDatabase::hasFamily(JapaneseFamily) && QFontDatabase::hasFamily(ChineseFamily));
        QCOMPARE(foreignForms(QFont(JapaneseFamily)), QString());
        QCOMPARE(foreignForms(QFont(ChineseFamily)), Characters);
        QCOMPARE(foreignForms(withJapaneseForms(QFont(ChineseFamily))), QString());
    }

    void theFamiliesOfAFontFollowOnce()
    {
        const QFont once = withJapaneseForms(QFont(u"DejaVu Sans"_s));
        QCOMPARE(once.families().constLast(), u"DejaVu Sans"_s);
        QCOMPARE(withJapaneseForms(once).families(), once.families());
    }

    void theyAreJapaneseInEveryWindowWhateverTheThemeDoes_data()
    {
        QTest::addColumn<QString>("language");
        for (const char* language : {"ja_JP.UTF-8", "zh_CN.UTF-8", "zh_TW.UTF-8", "C"})
            QTest::newRow(language) << QString::fromLatin1(language);
    }

    void theyAreJapaneseInEveryWindowWhateverTheThemeDoes()
    {
        QFETCH(QString, language);
        // A run asks the system for its language once.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"LC_ALL"_s, u"LC_CTYPE"_s, u"LANG"_s, u"FC_LANG"_s})
            environment.remove(name);
        environment.insert(u"LANG"_s, language);
        QProcess run;
        run.setProcessEnvironment(environment);
        run.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        run.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(AsRun)});
        QVERIFY(run.waitForFinished(120'000));
        QCOMPARE(QString::fromUtf8(run.readAllStandardOutput()), QString());
        QCOMPARE(run.exitCode(), 0);
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc > 1 && std::strcmp(argv[1], AsRun) == 0) {
        const QStringList found = foreignFormsOfARun();
        const QByteArray text = found.join(u'\n').toUtf8();
        static_cast<void>(std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout));
        return found.isEmpty() ? 0 : 1;
    }
    TestJapaneseGlyphs test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_japanese_glyphs.moc"
