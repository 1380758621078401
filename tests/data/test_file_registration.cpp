#include "tests/data/form_world.h"
#include "tests/support/troubled_database.h"

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <utility>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

const MessageBox Missing{.text = u"必須項目が入力されていません。"_s, .title = u"Quillon システム監査部"_s};
const MessageBox NotFound{.text = u"指定されたファイルが見つかりません。"_s, .title = u"FILE"_s};
const MessageBox NoFolder{
    .text = u"カレントフォルダ内に【RefFile】フォルダが見つかりませんでした。"
            u"ファイルデータをリンク／表示するにはカレントフォルダ内に【RefFile】フォルダが必要です。"_s,
    .title = u"FILE"_s,
    .icon = Icon::Information};
const MessageBox Registered{.text = u"本データを登録しました。"_s, .title = u"FILE"_s};
const MessageBox AskRegister{.text = u"現在のデータを登録しますか。"_s,
                             .title = u"Quillon ファイルデータ管理部"_s,
                             .buttons = Buttons::YesNoCancel};

MessageBox failure(qint32 number)
{
    return {.text = u"対処不能なエラーが発生しました。\r\n説明："_s + standardDescription(number),
            .title = u"Quillon システム監査部"_s};
}

} // namespace

/// What registering a file copies and writes, and what each failure leaves.
class TestFileRegistration : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<FormWorld> world;
    QPointer<frmRefFileEntry> form;

    QString pathOf(const QString& name) const { return world->folder.filePath(name); }
    QString write(const QString& name, const QByteArray& content) const
    {
        QFile file(pathOf(name));
        if (!QDir().mkpath(QFileInfo(file).path()) || !file.open(QIODevice::WriteOnly) ||
            file.write(content) != content.size())
            qFatal("cannot write a test file");
        return file.fileName();
    }
    QByteArray copied(const QString& name) const
    {
        QFile file(pathOf(u"RefFile/"_s + name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no such file)");
    }
    QStringList copies() const
    {
        return QDir(pathOf(u"RefFile"_s)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    void begin() { form = &world->beginRegistration<frmRefFileEntry>(); }
    /// Enters a path and registers it through the menu.
    void registerPath(const QString& path)
    {
        if (form.isNull())
            begin();
        FormWorld::enter(FormWorld::name(*form), path);
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        FormWorld::processEvents();
    }
    /// The window still stands with its input, and nothing has been written.
    void verifyNothingHappened(const QString& path) const
    {
        QVERIFY(!form.isNull());
        QCOMPARE(form->fieldText(0), path);
        QCOMPARE(world->registeredFiles(), QStringList());
        QCOMPARE(world->memberships(), QStringList());
        world->dialogs.expect(AskRegister, Answer::No); // closing asks, as before
        QVERIFY(FormWorld::closes(*form));
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

    void fileIsCopiedAndItsRowWritten()
    {
        const QByteArray content = "one\0two\r\n\xff"_ba;
        const QString path = write(u"from here/図 1.txt"_s, content);
        world->dialogs.expect(Registered);
        registerPath(path);
        QVERIFY(form.isNull()); // has closed itself without asking
        QCOMPARE(world->registeredFiles(), QStringList({u"図 1.txt|F-991231-001|未入力"_s}));
        QCOMPARE(world->memberships(), QStringList());
        QCOMPARE(copied(u"図 1.txt"_s), content);
        QCOMPARE(copies(), QStringList({u"図 1.txt"_s}));
        QVERIFY(QFile::exists(path));
    }

    void buttonRegistersAsTheMenuDoes()
    {
        begin();
        FormWorld::enter(FormWorld::name(*form), write(u"a.txt"_s, "a"));
        world->dialogs.expect(Registered);
        form->findChild<QWidget*>(u"cmdEntry"_s)->setFocus();
        QTest::keyClick(form->focusWidget(), Qt::Key_Space);
        FormWorld::processEvents();
        QVERIFY(form.isNull());
        QCOMPARE(world->registeredFiles().size(), 1);
    }

    void onlyTheFirstListedCategoryGetsTheFile()
    {
        begin();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Picture});
        form->setCategoryRows({world->addCategory(u"川"_s, u"A-B"_s), world->addCategory(u"海"_s, u"C"_s)});
        world->dialogs.expect(Registered);
        registerPath(write(u"a.txt"_s, "a"));
        // The row is added as it is; no ancestor is left.
        QCOMPARE(world->memberships(), QStringList({u"A|F-991231-001"_s, u"A-B|F-991231-001"_s}));
    }

    void secondFileOfAnyNameReplacesTheFirst()
    {
        world->dialogs.expect(Registered);
        registerPath(write(u"one/a.txt"_s, "a long first content"));
        world->dialogs.expect(Registered);
        registerPath(write(u"two/a.txt"_s, "second"));
        QCOMPARE(world->registeredFiles(),
                 QStringList({u"a.txt|F-991231-001|未入力"_s, u"a.txt|F-991231-002|未入力"_s}));
        QCOMPARE(copied(u"a.txt"_s), QByteArray("second"));
        QCOMPARE(copies(), QStringList({u"a.txt"_s}));
    }

    void fileOfTheFolderItselfCanBeRegistered()
    {
        world->dialogs.expect(Registered);
        registerPath(write(u"RefFile/a.txt"_s, "content"));
        QCOMPARE(copied(u"a.txt"_s), QByteArray("content"));
        QCOMPARE(world->registeredFiles().size(), 1);
    }

    void emptyPathIsRefused()
    {
        world->dialogs.expect(Missing);
        registerPath(QString());
        QVERIFY(!form.isNull());
        QVERIFY(form->isVisible());
        QCOMPARE(world->registeredFiles(), QStringList());
        QVERIFY(FormWorld::closes(*form)); // an empty path asks nothing
    }

    void whatIsNoFileIsNotFound_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing") << u"missing.txt"_s;
        QTest::newRow("blank") << u" "_s;
        QTest::newRow("folder with its separator") << u"folder/"_s;
        QTest::newRow("folder without it") << u"folder"_s;
        QTest::newRow("file with a separator") << u"a.txt/"_s;
#ifdef Q_OS_UNIX
        QTest::newRow("pipe") << u"pipe"_s;
        QTest::newRow("link that leads nowhere") << u"dangling"_s;
#endif
    }

    void whatIsNoFileIsNotFound()
    {
        QFETCH(QString, path);
        QVERIFY(QDir(world->folder.path()).mkdir(u"folder"_s));
        write(u"a.txt"_s, "a");
#ifdef Q_OS_UNIX
        QVERIFY(QFile::link(pathOf(u"gone"_s), pathOf(u"dangling"_s)));
        QCOMPARE(mkfifo(pathOf(u"pipe"_s).toLocal8Bit().constData(), 0600), 0);
#endif
        path = pathOf(path);
        world->dialogs.expect(NotFound);
        registerPath(path);
        verifyNothingHappened(path);
        QCOMPARE(copies(), QStringList());
    }

    void missingFolderOfFilesIsToldAndNotMade()
    {
        QVERIFY(QDir(world->folder.path()).rmdir(u"RefFile"_s));
        const QString path = write(u"a.txt"_s, "a");
        world->dialogs.expect(NoFolder);
        registerPath(path);
        QVERIFY(!QFile::exists(pathOf(u"RefFile"_s)));
        verifyNothingHappened(path);
    }

    void missingFileIsToldBeforeTheMissingFolder()
    {
        QVERIFY(QDir(world->folder.path()).rmdir(u"RefFile"_s));
        world->dialogs.expect(NotFound);
        registerPath(pathOf(u"missing.txt"_s));
        verifyNothingHappened(pathOf(u"missing.txt"_s));
    }

    void longCopyShowsThatTheProgramIsAtWork()
    {
        constexpr int Piece = 1 << 20; // so much is copied from one report to the next
        begin();
        auto* bar = form->findChild<QProgressBar*>(u"pgbCopy"_s);
        QCOMPARE(bar->accessibleName(), u"コピーの進み具合"_s);
        QStringList seen;
        world->files.whileCopying = [&] {
            const QCursor* cursor = QApplication::overrideCursor();
            seen << u"%1 %2 of %3%4"_s.arg(bar->isVisible() ? u"shown"_s : u"hidden"_s)
                        .arg(bar->value())
                        .arg(bar->maximum())
                        .arg(cursor != nullptr && cursor->shape() == Qt::WaitCursor ? u" waiting"_s
                                                                                    : QString());
            world->clock.time = world->clock.time.addMSecs(seen.size() == 1 ? 32 : seen.size() == 2 ? 1 : 33);
            QAccessibleInterface* told = QAccessible::queryAccessibleInterface(bar);
            QCOMPARE(told->text(QAccessible::Name), bar->accessibleName());
            QCOMPARE(told->valueInterface()->currentValue().toInt(), bar->value());
            QCOMPARE(told->valueInterface()->maximumValue().toInt(), bar->maximum());
        };
        world->dialogs.expect(Registered);
        world->dialogs.meanwhile([&] {
            QVERIFY(bar->isHidden());
            QVERIFY(QApplication::overrideCursor() == nullptr);
        });
        registerPath(write(u"a.bin"_s, QByteArray(qsizetype{4} * Piece, 'a')));
        QCOMPARE(seen, QStringList({u"hidden -1 of 100 waiting"_s, u"hidden -1 of 100 waiting"_s,
                                    u"shown 750 of 1000 waiting"_s, u"shown 1000 of 1000 waiting"_s}));
        QVERIFY(form.isNull());
    }

    void longCopyCanBeCancelled_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("Esc") << u"Esc"_s;
        QTest::newRow("the Cancel button") << u"button"_s;
        QTest::newRow("the Cancel button by its key") << u"key"_s;
        QTest::newRow("the Cancel button from outside") << u"outside"_s;
        QTest::newRow("the close box") << u"close box"_s;
    }

    void longCopyCanBeCancelled()
    {
        QFETCH(QString, way);
        begin();
        auto& cancel = *form->findChild<QPushButton*>(u"cmdCancel"_s);
        int reports = 0;
        world->files.whileCopying = [&] {
            world->clock.time = world->clock.time.addMSecs(33);
            if (++reports != 2)
                return;
            // What the person does waits until the work looks after it.
            QTimer::singleShot(0, form, [&] {
                QTest::keyClick(&FormWorld::name(*form), Qt::Key_X); // leads to nothing
                if (way == u"Esc"_s)
                    QTest::keyClick(&FormWorld::name(*form), Qt::Key_Escape);
                else if (way == u"button"_s)
                    QTest::mouseClick(&cancel, Qt::LeftButton);
                else if (way == u"key"_s)
                    QTest::keyClick(&cancel, Qt::Key_Space);
                else if (way == u"outside"_s)
                    cancel.click(); // by assistive technology, as which no event comes
                else
                    form->close();
            });
        };
        const QString path = write(u"a.bin"_s, QByteArray(8 << 20, 'a'));
        write(u"RefFile/a.bin"_s, "of another datum");
        FormWorld::enter(FormWorld::name(*form), path);
        // The button that cancels has the focus afterwards, and must not get this Enter as well.
        QTest::keyClick(&FormWorld::name(*form), Qt::Key_Return);
        FormWorld::processEvents();
        QVERIFY(reports < 6);
        QCOMPARE(copies(), QStringList(u"a.bin"_s));
        QCOMPARE(copied(u"a.bin"_s), QByteArray("of another datum"));
        verifyNothingHappened(path); // and closing asks, as before
    }

    void whatIsPressedElsewhereDuringACopyLeadsToNothing()
    {
        world->add(u"水"_s, Water, u"液体"_s);
        frmMainData& other = world->show(Water);
        begin();
        bool pressed = false;
        world->files.whileCopying = [&] {
            world->clock.time = world->clock.time.addMSecs(33);
            if (!std::exchange(pressed, true))
                QTimer::singleShot(0, &other, [&] {
                    QTest::keyClick(&FormWorld::name(other), Qt::Key_A);
                    other.close();
                    // Assistive technology acts without such events.
                    other.findChild<QAction*>(u"mnuDataClose"_s)->trigger();
                    form->findChild<QPushButton*>(u"cmdPath"_s)->click();
                    form->findChild<QAction*>(u"mnuDataEntry"_s)->trigger();
                });
        };
        world->dialogs.expect(Registered);
        registerPath(write(u"a.bin"_s, QByteArray(8 << 20, 'a')));
        QVERIFY(form.isNull());
        QVERIFY(other.isVisible());
        QCOMPARE(other.fieldText(0), u"水"_s);
    }

    void failingCopyIsToldAndWritesNothing_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("full disk") << 61;
        QTest::newRow("no permission") << 70;
        QTest::newRow("broken disk") << 75;
    }

    void failingCopyIsToldAndWritesNothing()
    {
        QFETCH(int, number);
        const QString path = write(u"a.txt"_s, "a");
        world->files.copyFailure = number;
        begin();
        const auto* bar = form->findChild<QProgressBar*>(u"pgbCopy"_s);
        bool showedWork = false;
        world->files.whileCopying = [&] {
            showedWork = bar->isVisible() && QApplication::overrideCursor() != nullptr;
            world->clock.time = world->clock.time.addMSecs(33);
        };
        world->dialogs.expect(failure(number));
        world->dialogs.meanwhile([bar] {
            QVERIFY(bar->isHidden());
            QVERIFY(QApplication::overrideCursor() == nullptr);
        });
        registerPath(path);
        QVERIFY(showedWork);
        QCOMPARE(world->eventLog.lines.size(), 1);
        QVERIFY(world->eventLog.lines.first().contains(
            u"LOCATION : mnuDataEntry_Click, ErrorNumber : %1, DESCRIPTION : "_s.arg(number) +
            standardDescription(number)));
        QCOMPARE(copies(), QStringList());
        verifyNothingHappened(path);
    }

    void failingCopyCanBeTriedAgain()
    {
        const QString path = write(u"a.txt"_s, "a");
        world->files.copyFailure = 61;
        world->dialogs.expect(failure(61));
        registerPath(path);
        world->files.copyFailure = 0;
        world->dialogs.expect(Registered);
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        QCOMPARE(world->registeredFiles().size(), 1);
    }

    void folderInPlaceOfTheCopyIsAFailure()
    {
        QVERIFY(QDir(world->folder.path()).mkpath(u"RefFile/a.txt"_s));
        const QString path = write(u"a.txt"_s, "a");
        begin();
        FormWorld::enter(FormWorld::name(*form), path);
        world->dialogs.expect(failure(75));
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        verifyNothingHappened(path);
        QCOMPARE(copies(), QStringList({u"a.txt"_s}));
    }

    void nameThatIsTooLongIsToldAndLeavesNoCopy()
    {
        world->giveCategories(1);
        world->mainWindow.selected = 10;
        const QString name = QString(47, u'a') + u".txt"_s; // 51 characters
        const QString path = write(name, "a");
        MessageBox tooLong = failure(3163);
        tooLong.text = u"対処不能なエラーが発生しました。\r\n説明：ファイル名「%1」は長すぎます（51 文字）。"
                       u"50 文字以内の名前に変えてから登録してください。"_s.arg(name);
        world->dialogs.expect(tooLong);
        registerPath(path);
        QCOMPARE(copies(), QStringList());
        verifyNothingHappened(path);
    }

    void longestNameIsRegistered()
    {
        const QString name = QString(46, u'長') + u".txt"_s; // 50 characters
        world->dialogs.expect(Registered);
        registerPath(write(name, "a"));
        QCOMPARE(world->registeredFiles(), QStringList({name + u"|F-991231-001|未入力"_s}));
    }

    void identifierTakenMeanwhileIsReplacedByTheNextAndShown()
    {
        begin();
        world->add(u"先客"_s, Picture, u"未入力"_s);
        FormWorld::enter(FormWorld::name(*form), write(u"a.txt"_s, "a"));
        world->dialogs.expect(Registered);
        world->dialogs.meanwhile([&] { QCOMPARE(form->fieldText(1), u"F-991231-002"_s); });
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        FormWorld::processEvents();
        QCOMPARE(world->registeredFiles(),
                 QStringList({u"先客|F-991231-001|未入力"_s, u"a.txt|F-991231-002|未入力"_s}));
        QCOMPARE(copies(), QStringList(u"a.txt"_s));
        QVERIFY(form.isNull());
    }

    void failingMembershipWritesNoRowEither()
    {
        begin();
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, Picture}); // it is filed there already
        form->setCategoryRows({world->addCategory(u"川"_s, u"A"_s)});
        FormWorld::enter(FormWorld::name(*form), write(u"a.txt"_s, "a"));
        world->dialogs.expect(failure(3022));
        QVERIFY(FormWorld::choose(*form, u"mnuDataEntry"_s));
        QCOMPARE(world->registeredFiles(), QStringList());
        QCOMPARE(world->memberships().size(), 1);
        QVERIFY(!form.isNull());
    }

    void lockedDatabaseKeepsTheWindow()
    {
        const QString path = write(u"a.txt"_s, "a");
        begin();
        {
            const ForeignLock other(*world->session.OpenDb, ForeignLock::Kind::Writing);
            world->dialogs.expect(failure(3260));
            registerPath(path);
        }
        verifyNothingHappened(path);
    }

    void bareNameOfAFileHasNoFolder()
    {
        const QString before = QDir::currentPath();
        write(u"a.txt"_s, "a");
        QVERIFY(QDir::setCurrent(world->folder.path()));
        world->dialogs.expect(
            MessageBox{.text = u"特定文字列の取得に必要な区切文字が見つかりませんでした。"_s,
                       .title = u"特定文字列抽出処理"_s});
        world->dialogs.expect(failure(75));
        registerPath(u"a.txt"_s);
        QVERIFY(QDir::setCurrent(before));
        QCOMPARE(copies(), QStringList());
        verifyNothingHappened(u"a.txt"_s);
    }
};

QTEST_MAIN(TestFileRegistration)
#include "test_file_registration.moc"
