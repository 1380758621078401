#include "tests/data/form_world.h"
#include "tests/support/compare_text.h"
#include "tests/support/held_key.h"

#include <QDir>
#include <QFile>
#include <QMenuBar>
#include <QPushButton>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox AskRegister{.text = u"現在のデータを登録しますか。"_s,
                             .title = u"Quillon ファイルデータ管理部"_s,
                             .buttons = Buttons::YesNoCancel};
const MessageBox NotFound{.text = u"指定されたファイルが見つかりません。"_s, .title = u"FILE"_s};
const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};
const MessageBox Registered{.text = u"本データを登録しました。"_s, .title = u"FILE"_s};

/// What the window asks the file dialog; `proposed` is the name chosen before.
FileDialog asked(const QString& proposed = {})
{
    return {.purpose = FileDialog::Purpose::Open,
            .filter = {},
            .fileName = proposed,
            .folder = {},
            .promptBeforeOverwriting = false};
}

} // namespace

/// The window that registers a file: its texts, the choice of a file, its keys and its closing.
class TestFileEntryWindow : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;

    frmRefFileEntry& begin() { return world->beginRegistration<frmRefFileEntry>(); }
    static QPushButton& button(QWidget& form, const QString& name)
    {
        return *form.findChild<QPushButton*>(name);
    }
    QString writeOutside(const QString& name) const
    {
        QFile file(world->folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write("content") < 0)
            qFatal("cannot write a test file");
        return file.fileName();
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<FormWorld>();
        QVERIFY(QDir(world->folder.path()).mkdir(u"RefFile"_s));
    }

    void cleanup()
    {
        QCOMPARE(world->takeComplaints(), QStringList());
        world.reset();
    }

    void newWindowHasItsDesignTexts()
    {
        auto* form = new frmRefFileEntry(world->session, world->registry);
        QCOMPARE(form->windowTitle(), u"ファイルデータ登録画面"_s);
        QCOMPARE(form->windowName(), u"frmRefFileEntry"_s);
        QCOMPARE(button(*form, u"cmdPath"_s).text(), u"参照(&P)"_s);
        QCOMPARE(button(*form, u"cmdEntry"_s).text(), u"登録(&E)"_s);
        QCOMPARE(button(*form, u"cmdCancel"_s).text(), u"ｷｬﾝｾﾙ(&C)"_s);
        QCOMPARE(menuBarOf(*form->menuBar()), QStringList({u"データ(&O)"_s}));
        QCOMPARE(entriesOf(*form->findChild<QMenu*>(u"mnuData"_s)),
                 QStringList({u"mnuDataEntry 登録(&E)"_s, u"mnuOpeLine |"_s, u"mnuOpeClose 閉じる"_s}));
        QCOMPARE(form->fieldText(0), QString());
        QCOMPARE(form->fieldText(2), QString()); // there is no such field
    }

    void modesChangeNothing()
    {
        frmRefFileEntry& form = begin();
        const auto entries = [&] { return entriesOf(*form.findChild<QMenu*>(u"mnuData"_s)); };
        const QStringList before = entries();
        form.setMode(FormMode::Display);
        QCOMPARE(entries(), before);
        form.setMode(FormMode::Registration);
        QCOMPARE(entries(), before);
    }

    void fieldsHaveLabelsAndToolTips()
    {
        frmRefFileEntry& form = begin();
        const QLineEdit& path = FormWorld::name(form);
        QCOMPARE(labelsOf(path), QStringList({u"ファイルの指定 :"_s}));
        QVERIFY(compareText(path.toolTip(), u"登録するファイルのパス（場所）を入力する。"));
        QCOMPARE(path.accessibleDescription(), path.toolTip());
        QVERIFY(!path.isReadOnly());
        QCOMPARE(form.findChild<QLabel*>(u"lblPath"_s)->text(), u"ファイルの指定 :"_s);
        const QLineEdit& identifier = FormWorld::identifier(form);
        QCOMPARE(labelsOf(identifier), QStringList({u"ＩＤ :"_s}));
        QCOMPARE(identifier.text(), Picture);
        QVERIFY(identifier.isReadOnly());
    }

    void categoryListHasItsHeadersNameAndToolTip()
    {
        const ReportList& list = FormWorld::list(begin(), u"lsvCategory"_s);
        QCOMPARE(headersOf(list.rows()), QStringList({u"カテゴリ名"_s, u"識別符号"_s, u"位置"_s}));
        QCOMPARE(list.accessibleName(), u"分類一覧"_s);
        QCOMPARE(list.toolTip(), u"データの分類先。複数の登録も可能です。"_s);
        QCOMPARE(list.accessibleDescription(), list.toolTip());
    }

    void selectedCategoryIsListed()
    {
        world->giveCategories(1);
        world->mainWindow.selected = 10;
        frmRefFileEntry& form = begin();
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList({u"分類1|A|"_s}));
        QVERIFY(FormWorld::entry(form, u"mnuDataEntry"_s)->isEnabled());
        QCOMPARE(&begin(), &form); // there is one
    }

    void tabGoesThroughTheWindowAsTheEyeDoes()
    {
        frmRefFileEntry& form = begin();
        QCOMPARE(form.focusWidget(), &FormWorld::name(form));
        QCOMPARE(tabRound(form), QStringList({u"txtFields(0)"_s, u"cmdPath"_s, u"txtFields(1)"_s,
                                              u"lsvCategory"_s, u"cmdEntry"_s, u"cmdCancel"_s}));
    }

    void chosenFileIsEntered()
    {
        frmRefFileEntry& form = begin();
        world->dialogs.expect(asked(), u"/a/図.txt"_s);
        button(form, u"cmdPath"_s).click();
        QCOMPARE(form.fieldText(0), u"/a/図.txt"_s);
        FormWorld::enter(FormWorld::name(form), u"/typed"_s);
        world->dialogs.expect(asked(u"/a/図.txt"_s), std::nullopt);
        button(form, u"cmdPath"_s).click();
        QCOMPARE(form.fieldText(0), u"/a/図.txt"_s); // sic: a cancelled dialog has its last name
        QTest::keyClick(&FormWorld::name(form), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(form.fieldText(0), u"/typed"_s);
        QVERIFY(FormWorld::entry(form, u"mnuDataEntry"_s)->isEnabled());
    }

    void nextFileIsLookedForWhereTheLastOneLay()
    {
        QVERIFY(QDir(world->folder.path()).mkdir(u"資料"_s));
        const QString path = writeOutside(u"資料/一.txt"_s);
        {
            auto& form = begin();
            FormWorld::enter(FormWorld::name(form), path);
            world->dialogs.expect(Registered);
            QVERIFY(FormWorld::choose(form, u"mnuDataEntry"_s));
            FormWorld::processEvents();
        }
        FileDialog dialog = asked();
        dialog.folder = world->folder.filePath(u"資料"_s);
        world->dialogs.expect(dialog, std::nullopt);
        auto& next = begin();
        button(next, u"cmdPath"_s).click();
        QVERIFY(FormWorld::closes(next));
    }

    void cancelledChoiceEmptiesThePathAtFirst()
    {
        frmRefFileEntry& form = begin();
        FormWorld::enter(FormWorld::name(form), u"/typed"_s);
        world->dialogs.expect(asked(), std::nullopt);
        button(form, u"cmdPath"_s).click();
        QCOMPARE(form.fieldText(0), QString());
    }

    void closeEntryDoesNothing()
    {
        frmRefFileEntry& form = begin();
        const QString path = writeOutside(u"a.txt"_s);
        FormWorld::enter(FormWorld::name(form), path);
        form.setCategoryRows({{u"川"_s, u"A"_s}});
        QVERIFY(FormWorld::entry(form, u"mnuOpeClose"_s)->isEnabled());
        QVERIFY(FormWorld::choose(form, u"mnuOpeClose"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 1);
        QVERIFY(form.isVisible());
        QCOMPARE(form.fieldText(0), path);
        QCOMPARE(form.fieldText(1), Picture);
        QCOMPARE(rowsOf(FormWorld::rows(form, u"lsvCategory"_s)), QStringList(u"川|A|"_s));
        QCOMPARE(world->registeredFiles(), QStringList());
        world->dialogs.expect(AskRegister, Answer::Cancel); // closing asks as before
        QVERIFY(!FormWorld::closes(form));
    }

    void emptyWindowClosesWithoutAsking() { QVERIFY(FormWorld::closes(begin())); }

    void cancelClosesWithoutAsking()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        FormWorld::enter(FormWorld::name(*form), writeOutside(u"a.txt"_s));
        button(*form, u"cmdCancel"_s).click();
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->registeredFiles(), QStringList());
    }

    void pathAsksBeforeClosing_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("closes");
        QTest::addColumn<bool>("written");
        QTest::newRow("yes") << int(Answer::Yes) << true << true;
        QTest::newRow("no") << int(Answer::No) << true << false;
        QTest::newRow("cancel") << int(Answer::Cancel) << false << false;
    }

    void pathAsksBeforeClosing()
    {
        QFETCH(int, answer);
        QFETCH(bool, written);
        frmRefFileEntry& form = begin();
        FormWorld::enter(FormWorld::name(form), writeOutside(u"a.txt"_s));
        world->dialogs.expect(AskRegister, static_cast<Answer>(answer));
        if (written)
            world->dialogs.expect(Registered);
        QTEST(FormWorld::closes(form), "closes");
        QCOMPARE(world->registeredFiles(),
                 written ? QStringList({u"a.txt|F-991231-001|未入力"_s}) : QStringList());
    }

    void failedRegistrationKeepsTheWindowOpen()
    {
        frmRefFileEntry& form = begin();
        FormWorld::enter(FormWorld::name(form), u"/missing/file.txt"_s);
        world->dialogs.expect(AskRegister, Answer::Yes);
        world->dialogs.expect(NotFound);
        QVERIFY(!FormWorld::closes(form));
        QCOMPARE(form.fieldText(0), u"/missing/file.txt"_s);
        world->dialogs.expect(AskRegister, Answer::No); // it asks again
        QVERIFY(FormWorld::closes(form));
    }

    void closingAllAsksTheWindow()
    {
        frmRefFileEntry& form = begin();
        FormWorld::enter(FormWorld::name(form), u"/a"_s);
        auto& document = world->beginRegistration<frmRefDoc>();
        world->dialogs.expect(AskRegister, Answer::No);
        QVERIFY(FormWorld::choose(document, u"mnuDataCloseAll"_s));
        FormWorld::processEvents();
        QCOMPARE(world->windowCount(), 0);
    }

    void escapeAsksAsTheCloseBoxDoes()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        FormWorld::enter(FormWorld::name(*form), u"/a"_s);
        world->dialogs.expect(AskRegister, Answer::Cancel);
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Escape);
        QVERIFY(form->isVisible());
        world->dialogs.expect(AskRegister, Answer::No);
        QTest::keyClick(form->findChild<QWidget*>(u"lsvCategory"_s), Qt::Key_Escape);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void enterInThePathRegisters()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        world->dialogs.expect(Missing);
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Return);
        FormWorld::enter(FormWorld::name(*form), writeOutside(u"a.txt"_s));
        world->dialogs.expect(Registered);
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Enter);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->registeredFiles().size(), 1);
    }

    void enterPressesTheButtonThatHasTheFocus()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        world->dialogs.expect(Missing);
        button(*form, u"cmdEntry"_s).setFocus();
        QTest::keyClick(form->focusWidget(), Qt::Key_Return);
        button(*form, u"cmdCancel"_s).setFocus();
        QTest::keyClick(form->focusWidget(), Qt::Key_Return);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
    }

    void compositionHasEnterAndEscapeFirst()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        QLineEdit& path = FormWorld::name(*form);
        FormWorld::enter(path, u"/a"_s);
        compose(path, u"ず"_s);
        QTest::keyClick(&path, Qt::Key_Return); // registers nothing
        QCOMPARE(form->fieldText(0), u"/aず"_s);
        compose(path, u"ず"_s);
        QTest::keyClick(&path, Qt::Key_Escape); // asks nothing
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
        commit(path, u"図"_s);
        QCOMPARE(form->fieldText(0), u"/aず図"_s);
        world->dialogs.expect(NotFound);
        QTest::keyClick(&path, Qt::Key_Return);
    }

    void keysHeldDownActOnce()
    {
        const QPointer<frmRefFileEntry> form(&begin());
        QLineEdit& path = FormWorld::name(*form);
        for (const int key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape})
            repeatKey(path, key);
        FormWorld::processEvents();
        QVERIFY(!form.isNull());
    }
};

QTEST_MAIN(TestFileEntryWindow)
#include "test_file_entry_window.moc"
