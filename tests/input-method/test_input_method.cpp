#include "app/shell/real_dialogs.h"
#include "tests/auxiliary/search_world.h"
#include "tests/data/twin_fixture.h"
#include "ui/data/frmRefFileEntry.h"
#include "ui/widgets/composition.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/persons_input.h"

#include <QApplication>
#include <QInputMethodEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Japanese as it is typed: the keys come from outside, through the display and a real input method, which answers
/// when it likes. `run.sh` beside this gives it all that.
class TestInputMethod : public TwinFixture
{
    Q_OBJECT

private:
    static constexpr int PatienceInMs = 10'000;

    static void xdotool(const QStringList& words)
    {
        QProcess process;
        process.start(u"xdotool"_s, words);
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, PatienceInMs);
        QCOMPARE(process.exitCode(), 0);
    }
    static void press(const QStringList& keys)
    {
        xdotool(QStringList{u"key"_s, u"--delay"_s, u"40"_s} + keys);
    }
    static void type(const QString& letters) { xdotool({u"type"_s, u"--delay"_s, u"40"_s, letters}); }

    /// Clicks into the middle of a part of a widget.
    static void click(const QWidget& widget, const QRect& part)
    {
        const QPoint place = widget.mapToGlobal(part.center());
        xdotool({u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s, u"1"_s});
    }

    /// What the input method shows at present.
    class Shown : public QObject
    {
    public:
        QString text;

    protected:
        bool eventFilter(QObject* /*receiver*/, QEvent* event) override
        {
            if (event->type() == QEvent::InputMethod)
                text = static_cast<QInputMethodEvent*>(event)->preeditString();
            return false;
        }
    };

    static bool isComposing(const QWidget& window)
    {
        return PersonsInput::ofApplication().composition().isActiveIn(window);
    }
    /// The person sees the window, and what is typed goes to this widget in it.
    static void goTo(QWidget& window, QWidget& widget)
    {
        window.raise();
        window.activateWindow();
        widget.setFocus();
        QTRY_VERIFY_WITH_TIMEOUT(widget.hasFocus(), PatienceInMs);
    }
    /// Types letters that the input method composes to these kana and goes on showing.
    void composeIn(QWidget& window, QWidget& widget, const QString& letters, const QString& kana)
    {
        goTo(window, widget);
        compose(window, letters, kana);
    }
    void compose(QWidget& window, const QString& letters, const QString& kana)
    {
        type(letters);
        QTRY_COMPARE_WITH_TIMEOUT(m_shown.text, kana, PatienceInMs);
        QVERIFY(isComposing(window));
    }
    /// The same at the end of the field that the row of test data names.
    void composeIn(DataForm& form, const QString& letters, const QString& kana)
    {
        FormWorld::name(form).end(false);
        FormWorld::definition(form).moveCursor(QTextCursor::End);
        composeIn(form, field(form), letters, kana);
    }
    static QWidget& field(DataForm& form)
    {
        QFETCH(bool, inName);
        return inName ? static_cast<QWidget&>(FormWorld::name(form)) : FormWorld::definition(form);
    }
    static QString textOf(const DataForm& form)
    {
        QFETCH(bool, inName);
        return form.fieldText(inName ? 0 : 2);
    }
    /// The first datum with the text behind what stood in the field.
    static QString changed(const QString& text)
    {
        QFETCH(bool, inName);
        return inName ? firstDatum(u"水"_s + text, u"液体"_s) : firstDatum(u"水"_s, u"液体"_s + text);
    }
    static void everyField()
    {
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("inName");
        for (const QString& identifier : {Water, Book}) {
            QTest::newRow(tag(identifier, u"name"_s)) << identifier << true;
            QTest::newRow(tag(identifier, u"content"_s)) << identifier << false;
        }
    }
    void expectQuestion() const
    {
        world->dialogs.expect(AskUpdate, Answer::Yes);
        world->dialogs.expect(twin().updated);
    }

    Shown m_shown;

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariable("QT_IM_MODULE") == u"ibus" && QGuiApplication::platformName() == u"xcb",
                 "This test needs a display and an input method of its own: tests/input-method/run.sh");
        PersonsInput::ofApplication();
        QCoreApplication::instance()->installEventFilter(&m_shown);
    }
    void init() { makeWorld(); }
    void cleanup() { endWorld(); }

    void closingAsksForWhatIsComposed_data() { everyField(); }

    void closingAsksForWhatIsComposed()
    {
        DataForm& form = show();
        const QPointer<QWidget> window(&form);
        composeIn(form, u"desu"_s, u"です"_s);
        expectQuestion();
        press({u"alt+F4"_s});
        QTRY_VERIFY_WITH_TIMEOUT(window.isNull(), PatienceInMs);
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
    }

    void menuByKeysWritesIt_data() { everyField(); }

    void menuByKeysWritesIt()
    {
        DataForm& form = show();
        composeIn(form, u"desu"_s, u"です"_s);
        press({u"alt+d"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activePopupWidget() != nullptr, PatienceInMs);
        world->dialogs.expect(twin().updated);
        press({u"u"_s});
        QTRY_COMPARE_WITH_TIMEOUT(data(), QStringList(changed(u"です"_s)), PatienceInMs);
        QVERIFY(FormWorld::closes(form)); // nothing is left of it
    }

    void menuByMouseWritesIt_data() { everyField(); }

    void menuByMouseWritesIt()
    {
        DataForm& form = show();
        composeIn(form, u"desu"_s, u"です"_s);
        auto* menu = form.menuBar()->actions().front()->menu();
        click(*form.menuBar(), form.menuBar()->actionGeometry(menu->menuAction()));
        QTRY_VERIFY_WITH_TIMEOUT(menu->isVisible(), PatienceInMs);
        world->dialogs.expect(twin().updated);
        click(*menu, menu->actionGeometry(form.findChild<QAction*>(u"mnuDataUpdate"_s)));
        QTRY_COMPARE_WITH_TIMEOUT(data(), QStringList(changed(u"です"_s)), PatienceInMs);
        QVERIFY(FormWorld::closes(form));
    }

    void whatIsConvertedIsWrittenAsItIsShown_data() { everyField(); }

    void whatIsConvertedIsWrittenAsItIsShown()
    {
        DataForm& form = show();
        composeIn(form, u"nihonn"_s, u"にほん"_s);
        press({u"space"_s});
        QTRY_COMPARE_WITH_TIMEOUT(m_shown.text, u"日本"_s, PatienceInMs);
        press({u"alt+d"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activePopupWidget() != nullptr, PatienceInMs);
        world->dialogs.expect(twin().updated);
        press({u"u"_s});
        QTRY_COMPARE_WITH_TIMEOUT(data(), QStringList(changed(u"日本"_s)), PatienceInMs);
        QVERIFY(FormWorld::closes(form));
    }

    void enterConfirmsItAndMeansNothingElse_data() { everyField(); }

    void enterConfirmsItAndMeansNothingElse()
    {
        DataForm& form = show();
        composeIn(form, u"desu"_s, u"です"_s);
        press({u"Return"_s});
        QTRY_VERIFY_WITH_TIMEOUT(!isComposing(form), PatienceInMs);
        QTRY_VERIFY(textOf(form).endsWith(u"です"_s)); // without a line end
        QVERIFY(field(form).hasFocus());
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
        QVERIFY(FormWorld::closes(form));
    }

    void escTakesItBackAndClosesNothing_data() { everyField(); }

    void escTakesItBackAndClosesNothing()
    {
        DataForm& form = show();
        const QPointer<QWidget> window(&form);
        composeIn(form, u"desu"_s, u"です"_s);
        press({u"Escape"_s});
        QTRY_VERIFY_WITH_TIMEOUT(window.isNull() || !isComposing(form), PatienceInMs);
        QVERIFY(!window.isNull());
        press({u"Escape"_s});
        QTRY_VERIFY_WITH_TIMEOUT(window.isNull(), PatienceInMs); // unchanged, so without a question
        QCOMPARE(data(), QStringList(firstDatum(u"水"_s, u"液体"_s)));
    }

    void clickElsewhereConfirmsIt_data() { everyField(); }

    void clickElsewhereConfirmsIt()
    {
        DataForm& form = show();
        composeIn(form, u"desu"_s, u"です"_s);
        QFETCH(bool, inName);
        const QWidget& other =
            inName ? static_cast<QWidget&>(FormWorld::definition(form)) : FormWorld::name(form);
        click(other, other.rect());
        QTRY_VERIFY_WITH_TIMEOUT(other.hasFocus(), PatienceInMs);
        QTRY_VERIFY(textOf(form).endsWith(u"です"_s));
        QCOMPARE(form.fieldText(inName ? 2 : 0), inName ? u"液体"_s : u"水"_s);
        world->dialogs.expect(twin().updated);
        QVERIFY(FormWorld::choose(form, u"mnuDataUpdate"_s));
        QCOMPARE(data(), QStringList(changed(u"です"_s)));
        QVERIFY(FormWorld::closes(form));
    }

    void nameThatIsComposedCountsAsFilled_data() { bothKinds(); }

    void nameThatIsComposedCountsAsFilled()
    {
        DataForm& form = beginRegistration();
        FormWorld::enter(FormWorld::definition(form), u"液体"_s);
        composeIn(form, FormWorld::name(form), u"mizu"_s, u"みず"_s);
        expectRegistered();
        press({u"alt+d"_s});
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::activePopupWidget() != nullptr, PatienceInMs);
        press({u"e"_s});
        QTRY_COMPARE_WITH_TIMEOUT(data(), QStringList(firstDatum(u"みず"_s, u"液体"_s)), PatienceInMs);
    }

    void pathThatIsComposedIsRegistered()
    {
        auto& entry = world->beginRegistration<frmRefFileEntry>();
        composeIn(entry, FormWorld::name(entry), u"nai"_s, u"ない"_s);
        bool told = false;
        world->dialogs.expect({.text = u"指定されたファイルが見つかりません。"_s, .title = u"FILE"_s});
        world->dialogs.meanwhile([&] { told = true; });
        press({u"alt+e"_s});
        QTRY_VERIFY_WITH_TIMEOUT(told, PatienceInMs);
        QCOMPARE(entry.fieldText(0), u"ない"_s);
    }

    void textThatIsComposedIsSearched()
    {
        SearchWorld search;
        search.addDefinition(u"みず"_s, Water, u"液体"_s);
        search.addDefinition(u"こおり"_s, Ice, u"固体"_s);
        search.enter(QString(), u"M"_s);
        composeIn(search.searchWindow(), search.textBox(), u"mizu"_s, u"みず"_s);
        press({u"alt+s"_s});
        QTRY_VERIFY_WITH_TIMEOUT(search.results() != nullptr, PatienceInMs);
        QTRY_COMPARE_WITH_TIMEOUT(search.names(), QStringList(u"みず"_s), PatienceInMs);
        QCOMPARE(search.dialogs.takeComplaints(), QStringList());
    }

    void rowIsFoundByTypingAndKeysKeepTheirMeaning_data()
    {
        QTest::addColumn<bool>("inTree");
        QTest::newRow("list") << false;
        QTest::newRow("tree") << true;
    }

    void rowIsFoundByTypingAndKeysKeepTheirMeaning()
    {
        SearchWorld program;
        program.addDefinition(u"こおり"_s, Ice, u"固体"_s);
        program.addDefinition(u"みず"_s, Water, u"液体"_s);
        WindowWorld::addRow(program.session().RsCategoryID, {u"A"_s, u"こおり"_s});
        WindowWorld::addRow(program.session().RsCategoryID, {u"B"_s, u"みず"_s});
        program.open(program.path); // anew, so that tree and list hold them
        frmMainMenu& window = program.mainWindow();
        auto* tree = WindowWorld::control<KeyedTree>(window, u"tvwCategory"_s);
        auto* list = WindowWorld::control<ReportList>(window, u"lsvData"_s);
        QFETCH(bool, inTree);
        QAbstractItemView& view = inTree ? static_cast<QAbstractItemView&>(*tree) : *list;
        if (inTree)
            tree->expandAll();
        QVERIFY(view.model()->rowCount() > 0);
        view.setCurrentIndex(view.model()->index(0, 0));
        const auto current = [&] { return view.currentIndex().data().toString(); };

        composeIn(window, view, u"mizu"_s, u"みず"_s);
        const auto* shown = view.findChild<QLabel*>(u"composition"_s);
        QTRY_COMPARE_WITH_TIMEOUT(shown->text(), u"みず"_s, PatienceInMs);
        QVERIFY(shown->isVisible());
        press({u"Return"_s});
        QTRY_COMPARE_WITH_TIMEOUT(current(), u"みず"_s, PatienceInMs);
        QVERIFY(shown->isHidden());
        QCOMPARE(program.loadedNames(), QStringList(u"frmMainMenu"_s)); // Enter opened nothing

        press({u"Up"_s});
        QTRY_COMPARE_WITH_TIMEOUT(current(), u"こおり"_s, PatienceInMs);
        press({u"Down"_s});
        QTRY_COMPARE_WITH_TIMEOUT(current(), u"みず"_s, PatienceInMs);
        QVERIFY(shown->isHidden());
        view.selectionModel()->clearSelection();
        press({u"space"_s});
        QTRY_VERIFY_WITH_TIMEOUT(view.selectionModel()->isSelected(view.currentIndex()), PatienceInMs);
        QCOMPARE(program.dialogs.takeComplaints(), QStringList());
    }

    void placesAreFoundByWhatIsTypedInTheBar_data() { bothKinds(); }

    void placesAreFoundByWhatIsTypedInTheBar()
    {
        DataForm& form = show(u"水"_s, u"みずはながれ、みずはこおる"_s);
        QPlainTextEdit& content = FormWorld::definition(form);
        content.moveCursor(QTextCursor::Start);
        goTo(form, content);
        press({u"ctrl+f"_s});
        auto* bar = form.findChild<QLineEdit*>(u"txtFindInText"_s);
        QVERIFY(bar != nullptr);
        QTRY_VERIFY_WITH_TIMEOUT(bar->hasFocus(), PatienceInMs);
        compose(form, u"mizu"_s, u"みず"_s);
        press({u"Return"_s}); // confirms, and goes to no second place
        QTRY_COMPARE_WITH_TIMEOUT(content.textCursor().selectedText(), u"みず"_s, PatienceInMs);
        QCOMPARE(content.textCursor().selectionStart(), 0);
        press({u"Return"_s});
        QTRY_COMPARE_WITH_TIMEOUT(content.textCursor().selectionStart(), 7, PatienceInMs);
        QVERIFY(FormWorld::closes(form));
    }

    void enterInAQuestionConfirmsFirst()
    {
        RealDialogs dialogs;
        QStringList steps;
        QTimer::singleShot(0, this, [&] {
            QTRY_VERIFY_WITH_TIMEOUT(QApplication::activeModalWidget() != nullptr, PatienceInMs);
            QPointer<QWidget> box(QApplication::activeModalWidget());
            auto* text = box->findChild<QLineEdit*>();
            QTRY_VERIFY_WITH_TIMEOUT(text->hasFocus(), PatienceInMs);
            compose(*box, u"mizu"_s, u"みず"_s);
            press({u"Return"_s});
            QTRY_VERIFY_WITH_TIMEOUT(box.isNull() || text->text() == u"みず"_s, PatienceInMs);
            steps << (box.isNull() ? u"gone"_s : u"still there"_s);
            press({u"Return"_s});
        });
        const std::optional<QString> answer = dialogs.inputBox({.prompt = u"名称"_s});
        QCOMPARE(steps, QStringList(u"still there"_s));
        QCOMPARE(answer, std::optional(u"みず"_s));
    }
};

QTEST_MAIN(TestInputMethod)
#include "test_input_method.moc"
