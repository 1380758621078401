#include "app/shell/real_dialogs.h"

#include "app/shell/japanese_interface.h"
#include "tests/support/test_folder.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QtTest>

#include <algorithm>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using quillon::testing::TestFolder;

class TestRealDialogs : public QObject
{
    Q_OBJECT

    RealDialogs dialogs;

    /// Runs `action` with the dialog of this kind that is on the screen next; a dialog of another kind is closed,
    /// which fails what the test expects of it.
    template <class Dialog, class Action> void whenShown(Action action)
    {
        QTimer::singleShot(0, this, [this, action] {
            QWidget* modal = QApplication::activeModalWidget();
            if (auto* dialog = qobject_cast<Dialog*>(modal)) {
                ++m_shown;
                action(*dialog);
            } else if (modal != nullptr) {
                modal->close();
            }
        });
    }

    static QStringList buttonTexts(const QMessageBox& box)
    {
        QStringList texts;
        const auto buttons = box.buttons();
        for (const QAbstractButton* button : buttons)
            texts << button->text();
        texts.sort();
        return texts;
    }

    static QString makeFile(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot make the file");
        return path;
    }

    int m_shown = 0;

private Q_SLOTS:
    void initTestCase() { setUpJapaneseInterface(*qApp); }
    void init() { m_shown = 0; }

    void theInterfaceIsJapaneseWhateverTheSystemSpeaks()
    {
        QCOMPARE(QLocale().language(), QLocale::Japanese);
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), u"キャンセル"_s);
        QVERIFY(QApplication::font().families().contains(u"Noto Sans CJK JP"_s));
        QCOMPARE(QGuiApplication::applicationDisplayName(), QCoreApplication::applicationName());
    }

    void boxesShowTextTitleAndButtons_data()
    {
        QTest::addColumn<Buttons>("buttons");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("ok") << Buttons::Ok << QStringList{u"OK"_s};
        QTest::newRow("ok, cancel") << Buttons::OkCancel << QStringList{u"OK"_s, u"キャンセル"_s};
        QTest::newRow("yes, no") << Buttons::YesNo << QStringList{u"いいえ(&N)"_s, u"はい(&Y)"_s};
        QTest::newRow("yes, no, cancel")
            << Buttons::YesNoCancel << QStringList{u"いいえ(&N)"_s, u"はい(&Y)"_s, u"キャンセル"_s};
    }

    void boxesShowTextTitleAndButtons()
    {
        QFETCH(Buttons, buttons);
        QFETCH(QStringList, texts);
        whenShown<QMessageBox>([&](QMessageBox& box) {
            QCOMPARE(box.text(), u"一行目\n二行目"_s);
            QCOMPARE(box.windowTitle(), u"Quillon システム運用部"_s);
            QCOMPARE(buttonTexts(box), texts);
            QCOMPARE(box.icon(), QMessageBox::NoIcon);
            QVERIFY(box.isModal());
            QVERIFY(box.defaultButton() != nullptr);
            box.reject();
        });
        dialogs.messageBox(
            {.text = u"一行目\r\n二行目"_s, .title = u"Quillon システム運用部"_s, .buttons = buttons});
        QCOMPARE(m_shown, 1);
    }

    void theInformationIconIsShownWhenAskedFor()
    {
        whenShown<QMessageBox>([](QMessageBox& box) {
            QCOMPARE(box.icon(), QMessageBox::Information);
            box.accept();
        });
        dialogs.messageBox({.text = u"お知らせ"_s, .icon = Icon::Information});
        QCOMPARE(m_shown, 1);
    }

    void whatLooksLikeATagIsShownAsItStands()
    {
        whenShown<QMessageBox>([](QMessageBox& box) {
            QCOMPARE(box.text(), u"<b>水</b> を削除しますか。"_s);
            auto* label = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
            QCOMPARE(label->text(), u"<b>水</b> を削除しますか。"_s);
            QCOMPARE(label->textFormat(), Qt::PlainText);
            box.reject();
        });
        dialogs.messageBox({.text = u"<b>水</b> を削除しますか。"_s, .buttons = Buttons::OkCancel});
        QCOMPARE(m_shown, 1);
    }

    void theButtonPressedIsTheAnswer_data()
    {
        QTest::addColumn<Buttons>("buttons");
        QTest::addColumn<QMessageBox::StandardButton>("button");
        QTest::addColumn<Answer>("answer");
        QTest::newRow("ok") << Buttons::OkCancel << QMessageBox::Ok << Answer::Ok;
        QTest::newRow("cancel") << Buttons::OkCancel << QMessageBox::Cancel << Answer::Cancel;
        QTest::newRow("yes") << Buttons::YesNoCancel << QMessageBox::Yes << Answer::Yes;
        QTest::newRow("no") << Buttons::YesNoCancel << QMessageBox::No << Answer::No;
        QTest::newRow("neither") << Buttons::YesNoCancel << QMessageBox::Cancel << Answer::Cancel;
    }

    void theButtonPressedIsTheAnswer()
    {
        QFETCH(Buttons, buttons);
        QFETCH(QMessageBox::StandardButton, button);
        QFETCH(Answer, answer);
        whenShown<QMessageBox>([=](QMessageBox& box) { box.button(button)->click(); });
        QCOMPARE(dialogs.messageBox({.text = u"質問"_s, .buttons = buttons}), answer);
        QCOMPARE(m_shown, 1);
    }

    void keysAnswerAsAPersonExpects_data()
    {
        QTest::addColumn<Buttons>("buttons");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<Answer>("answer");
        QTest::newRow("ok, Enter") << Buttons::Ok << Qt::Key_Return << Answer::Ok;
        QTest::newRow("ok, Esc") << Buttons::Ok << Qt::Key_Escape << Answer::Ok;
        QTest::newRow("ok cancel, Enter") << Buttons::OkCancel << Qt::Key_Return << Answer::Ok;
        QTest::newRow("ok cancel, Esc") << Buttons::OkCancel << Qt::Key_Escape << Answer::Cancel;
        QTest::newRow("yes no, Enter") << Buttons::YesNo << Qt::Key_Return << Answer::Yes;
        QTest::newRow("yes no, Esc") << Buttons::YesNo << Qt::Key_Escape << Answer::No;
        QTest::newRow("yes no cancel, Enter") << Buttons::YesNoCancel << Qt::Key_Return << Answer::Yes;
        QTest::newRow("yes no cancel, Esc") << Buttons::YesNoCancel << Qt::Key_Escape << Answer::Cancel;
    }

    void keysAnswerAsAPersonExpects()
    {
        QFETCH(Buttons, buttons);
        QFETCH(Qt::Key, key);
        QFETCH(Answer, answer);
        whenShown<QMessageBox>([=](QMessageBox& box) { QTest::keyClick(&box, key); });
        QCOMPARE(dialogs.messageBox({.text = u"質問"_s, .buttons = buttons}), answer);
        QCOMPARE(m_shown, 1);
    }

    void theCloseBoxIsLikeEsc()
    {
        whenShown<QMessageBox>([](QMessageBox& box) { box.close(); });
        QCOMPARE(dialogs.messageBox({.text = u"質問"_s, .buttons = Buttons::YesNo}), Answer::No);
        QCOMPARE(m_shown, 1);
    }

    void aVeryLongTextStaysOnTheScreen_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("many lines") << u"行\r\n"_s.repeated(500);
        QTest::newRow("one long line") << u"長い文章"_s.repeated(3000);
        QTest::newRow("one long word") << u"a"_s.repeated(5000);
    }

    void aVeryLongTextStaysOnTheScreen()
    {
        QFETCH(QString, text);
        whenShown<QMessageBox>([&](QMessageBox& box) {
            const QSize screen = box.screen()->availableSize();
            QVERIFY2(box.width() <= screen.width(), qPrintable(QString::number(box.width())));
            QVERIFY2(box.height() <= screen.height(), qPrintable(QString::number(box.height())));
            QVERIFY(box.button(QMessageBox::Ok)->isVisible());
            QCOMPARE(box.text(), QString(text).replace(u"\r\n"_s, u"\n"_s));
            QStringList visible;
            const auto labels = box.findChildren<QLabel*>();
            for (const QLabel* label : labels) {
                if (label->isVisible())
                    visible << label->text();
            }
            QCOMPARE(visible, QStringList{box.text()});
            QVERIFY(box.focusWidget() != nullptr);
            QTest::keyClick(box.focusWidget(), Qt::Key_Return);
        });
        QCOMPARE(dialogs.messageBox({.text = text}), Answer::Ok);
        QCOMPARE(m_shown, 1);
    }

    void boxesStandBeforeTheActiveWindow()
    {
        QWidget window;
        window.setObjectName(u"frmMainMenu"_s);
        window.show();
        window.activateWindow();
        whenShown<QMessageBox>([&](QMessageBox& box) {
            QCOMPARE(box.parentWidget(), &window);
            box.accept();
        });
        dialogs.messageBox({.text = u"お知らせ"_s});
        QCOMPARE(m_shown, 1);
    }

    void aWindowThatIsClosedIsNoParentOfABox()
    {
        QWidget mainWindow;
        mainWindow.setObjectName(u"frmMainMenu"_s);
        mainWindow.show();
        QWidget closed;
        closed.show();
        closed.hide();
        QApplication::setActiveWindow(&closed);
        QCOMPARE(QApplication::activeWindow(), &closed);
        whenShown<QMessageBox>([&](QMessageBox& box) {
            QCOMPARE(box.parentWidget(), &mainWindow);
            box.accept();
        });
        dialogs.messageBox({.text = u"お知らせ"_s});
        whenShown<QInputDialog>([&](QInputDialog& box) {
            QCOMPARE(box.parentWidget(), &mainWindow);
            box.reject();
        });
        QVERIFY(!dialogs.inputBox({.prompt = u"名称"_s}));
        QCOMPARE(m_shown, 2);
    }

    void bothBoxesOfAnActionBelongToItsWindow()
    {
        QWidget mainWindow;
        mainWindow.setObjectName(u"frmMainMenu"_s);
        mainWindow.show();
        QWidget window;
        window.show();
        QTest::keyClick(&window, Qt::Key_A); // what the person does in it shows the boxes
        for (int time = 1; time <= 2; ++time) {
            // The system tells late which window it has made the active one.
            QApplication::setActiveWindow(time == 1 ? nullptr : &mainWindow);
            whenShown<QMessageBox>([&](QMessageBox& box) {
                QCOMPARE(box.parentWidget(), &window);
                QTest::keyClick(&box, Qt::Key_Return);
            });
            dialogs.messageBox({.text = u"お知らせ"_s});
            QCOMPARE(m_shown, time);
        }
        QCOMPARE(QApplication::activeWindow(), &window); // the focus returns
    }

    void windowsArePaintedBeforeTheWorkThatAnAnswerBegins()
    {
        struct Painted : QWidget {
            int paints = 0;
            void paintEvent(QPaintEvent*) override { ++paints; }
        };
        Painted window;
        window.resize(200, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        int before = 0;
        whenShown<QMessageBox>([&](QMessageBox& box) {
            before = window.paints;
            box.accept();
            window.update(); // as the system asks for it where the box has been
        });
        dialogs.messageBox({.text = u"質問"_s});
        QCOMPARE(m_shown, 1);
        QVERIFY(window.paints > before);
    }

    void aBoxSurvivesTheEndOfItsWindow()
    {
        auto* window = new QWidget;
        window->setObjectName(u"frmMainMenu"_s);
        window->show();
        window->activateWindow();
        whenShown<QMessageBox>([&](QMessageBox&) { delete window; });
        QCOMPARE(dialogs.messageBox({.text = u"質問"_s, .buttons = Buttons::OkCancel}), Answer::Cancel);
        QCOMPARE(m_shown, 1);
    }

    void anInputBoxAsksForOneLine()
    {
        whenShown<QInputDialog>([](QInputDialog& box) {
            QCOMPARE(box.windowTitle(), u"Quillon"_s);
            auto* label = box.findChild<QLabel*>();
            QCOMPARE(label->text(), u"<カテゴリ名>を\n入力してください。"_s);
            QCOMPARE(label->textFormat(), Qt::PlainText);
            auto* line = box.findChild<QLineEdit*>();
            QCOMPARE(line->text(), u"元の名前"_s);
            QCOMPARE(label->buddy(), line);
            QStringList texts;
            const auto buttons = box.findChildren<QPushButton*>();
            for (const QPushButton* button : buttons)
                texts << button->text();
            texts.sort();
            QCOMPARE(texts, QStringList({u"OK"_s, u"キャンセル"_s}));
            line->setText(u"新しい名前"_s);
            QTest::keyClick(line, Qt::Key_Return);
        });
        const auto answer =
            dialogs.inputBox({.prompt = u"<カテゴリ名>を\r\n入力してください。"_s, .content = u"元の名前"_s});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s), u"新しい名前"_s);
    }

    void anInputBoxTakesOneLine()
    {
        QGuiApplication::clipboard()->setText(u"新しい\r\n名前"_s);
        whenShown<QInputDialog>([](QInputDialog& box) {
            auto* line = box.findChild<QLineEdit*>();
            QTest::keyClick(line, Qt::Key_V, Qt::ControlModifier);
            QTest::keyClick(line, Qt::Key_Return);
        });
        const auto answer = dialogs.inputBox({.prompt = u"名前"_s, .content = u"元の名前"_s});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s), u"新しい 名前"_s);
    }

    void anInputBoxIsCancelledByEsc()
    {
        whenShown<QInputDialog>([](QInputDialog& box) { QTest::keyClick(&box, Qt::Key_Escape); });
        QVERIFY(!dialogs.inputBox({.prompt = u"名前"_s, .content = u"元の名前"_s}).has_value());
        QCOMPARE(m_shown, 1);
    }

    void anEmptyInputIsNoCancelledOne()
    {
        whenShown<QInputDialog>([](QInputDialog& box) { box.accept(); });
        const auto answer = dialogs.inputBox({.prompt = u"名前"_s});
        QVERIFY(answer.has_value());
        QCOMPARE(*answer, QString());
    }

    void filtersAreTranslated_data()
    {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QString>("toolkit");
        QTest::addColumn<QString>("suffix");
        QTest::newRow("none") << QString() << QString() << QString();
        QTest::newRow("database") << u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s << u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)"_s << u"mdb"_s;
        QTest::newRow("text") << u"ﾃｷｽﾄﾌｧｲﾙ (*.txt)|*.txt"_s << u"ﾃｷｽﾄﾌｧｲﾙ (*.txt)"_s << u"txt"_s;
        QTest::newRow("no pattern in the name") << u"文書|*.txt"_s << u"文書 (*.txt)"_s << u"txt"_s;
        QTest::newRow("two patterns") << u"画像|*.png;*.jpg"_s << u"画像 (*.png *.jpg)"_s << QString();
        QTest::newRow("two filters") << u"文書|*.txt|全て|*.*"_s << u"文書 (*.txt);;全て (*.*)"_s
                                     << QString();
        QTest::newRow("everything") << u"全て|*.*"_s << u"全て (*.*)"_s << QString();
    }

    void filtersAreTranslated()
    {
        QFETCH(QString, filter);
        QFETCH(QString, toolkit);
        QFETCH(QString, suffix);
        QCOMPARE(toolkitFilter(filter), toolkit);
        QCOMPARE(suffixOfFilter(filter), suffix);
    }

    void aFileDialogOpensAsAsked()
    {
        const TestFolder folder;
        whenShown<QFileDialog>([&](QFileDialog& dialog) {
            QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptOpen);
            QCOMPARE(dialog.nameFilters(), QStringList{u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)"_s});
            QCOMPARE(QDir::toNativeSeparators(dialog.directory().path()), folder.path());
            dialog.reject();
        });
        const auto answer =
            dialogs.fileDialog({.filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s, .folder = folder.path()});
        QCOMPARE(m_shown, 1);
        QVERIFY(!answer.has_value());
    }

    void onlyAFileThatIsThereIsOpened()
    {
        const TestFolder folder;
        int told = 0;
        whenShown<QFileDialog>([&](QFileDialog& dialog) {
            // The toolkit's own box waits inside "accept".
            QTimer::singleShot(0, this, [&told] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                if (box != nullptr && ++told > 0)
                    box->close();
            });
            dialog.findChild<QLineEdit*>(u"fileNameEdit"_s)->setText(u"無い.mdb"_s);
            QMetaObject::invokeMethod(&dialog, "accept");
            QVERIFY(dialog.isVisible());
            dialog.reject();
        });
        const auto answer =
            dialogs.fileDialog({.filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s, .folder = folder.path()});
        QCOMPARE(m_shown, 1);
        QCOMPARE(told, 1);
        QVERIFY(!answer.has_value());
    }

    void noDialogLeavesASettingsFile()
    {
#ifdef Q_OS_UNIX
        whenShown<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
        dialogs.fileDialog({});
        QCOMPARE(m_shown, 1);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // which writes them
        const QString file = QSettings(QSettings::UserScope, u"QtProject"_s).fileName();
        QVERIFY2(file.startsWith(u"/dev/null/"), qPrintable(file));
        QVERIFY(!QFile::exists(file));
#else
        QSKIP("Settings are no files here.");
#endif
    }

    void aFileWhoseNameIsNoTextCanBeChosen()
    {
#ifdef Q_OS_UNIX
        const TestFolder folder;
        makeFile(folder.filePath(u"水.txt"_s));
        const QByteArray path = QFile::encodeName(folder.path() + u"/"_s) + "\x83\x65\x83\x58\x83\x67.txt";
        const int file = open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        if (file < 0)
            QSKIP("This file system has no such names.");
        close(file);
        whenShown<QFileDialog>([](QFileDialog& dialog) {
            auto* names = dialog.findChild<QComboBox*>(u"unreadableNames"_s);
            const auto closing = qScopeGuard([&dialog] {
                if (dialog.result() != QDialog::Accepted)
                    dialog.reject();
            });
            QVERIFY(!names->isHidden());
            QCOMPARE(names->accessibleName(), u"文字化けした名前のファイル"_s);
            QCOMPARE(names->itemText(0), u"（選択してください）"_s);
            const auto labels = dialog.findChildren<QLabel*>();
            QVERIFY(std::any_of(labels.begin(), labels.end(), [names](const QLabel* label) {
                return label->buddy() == names && label->text() == u"文字化けした名前(&Z):"_s;
            }));
            QCOMPARE(names->itemText(1), u"テスト.txt"_s);
            QTest::keyClick(names, Qt::Key_Down);
            auto* choose = dialog.findChild<QPushButton*>(u"chooseUnreadableName"_s);
            QCOMPARE(choose->text(), u"選択(&S)"_s);
            choose->click();
        });
        const auto answer = dialogs.fileDialog({.folder = folder.path()});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s),
                 u"file://"_s + QString::fromLatin1(path.toPercentEncoding("/")));
#else
        QSKIP("Every name is text here.");
#endif
    }

    void whereEveryNameIsTextNothingElseIsOffered()
    {
        const TestFolder folder;
        makeFile(folder.filePath(u"水.txt"_s));
        whenShown<QFileDialog>([](QFileDialog& dialog) {
            QVERIFY(dialog.findChild<QComboBox*>(u"unreadableNames"_s)->isHidden());
            dialog.reject();
        });
        dialogs.fileDialog({.folder = folder.path()});
        QCOMPARE(m_shown, 1);
    }

    void aNewDatabaseGetsItsSuffix()
    {
        const TestFolder folder;
        whenShown<QFileDialog>([](QFileDialog& dialog) {
            QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptSave);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            auto* line = dialog.findChild<QLineEdit*>(u"fileNameEdit"_s);
            line->setText(u"知識"_s);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        const auto answer = dialogs.fileDialog({.purpose = FileDialog::Purpose::Save,
                                                .filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s,
                                                .folder = folder.path(),
                                                .promptBeforeOverwriting = true});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s), folder.filePath(u"知識.mdb"_s));
    }

    void aFileDialogProposesTheFormerNameInItsFolder_data()
    {
        QTest::addColumn<bool>("folderIsGiven");
        QTest::newRow("no folder given") << false;
        QTest::newRow("the folder of the file") << true;
    }

    void aFileDialogProposesTheFormerNameInItsFolder()
    {
        QFETCH(bool, folderIsGiven);
        const TestFolder folder;
        const QString former = makeFile(folder.filePath(u"前.mdb"_s));
        whenShown<QFileDialog>([&](QFileDialog& dialog) {
            QCOMPARE(QDir::toNativeSeparators(dialog.directory().path()), folder.path());
            QCOMPARE(dialog.findChild<QLineEdit*>(u"fileNameEdit"_s)->text(), u"前.mdb"_s);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        const auto answer =
            dialogs.fileDialog({.fileName = former, .folder = folderIsGiven ? folder.path() : QString()});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s), former);
    }

    void aFileDialogStartsInItsFolderWhereverTheFormerFileLies_data()
    {
        QTest::addColumn<bool>("twinIsThere"); // a file of the same name in the folder of the start
        QTest::newRow("alone") << false;
        QTest::newRow("beside one of the same name") << true;
    }

    void aFileDialogStartsInItsFolderWhereverTheFormerFileLies()
    {
        QFETCH(bool, twinIsThere);
        const TestFolder folder;
        const TestFolder other;
        const QString former = other.filePath(u"前 の.mdb"_s);
        makeFile(former);
        if (twinIsThere)
            makeFile(folder.filePath(u"前 の.mdb"_s));
        whenShown<QFileDialog>([&](QFileDialog& dialog) {
            QCOMPARE(QDir::toNativeSeparators(dialog.directory().path()), folder.path());
            QCOMPARE(dialog.findChild<QLineEdit*>(u"fileNameEdit"_s)->text(), former);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        const auto answer = dialogs.fileDialog(
            {.filter = u"ﾃﾞｰﾀﾍﾞｰｽﾌｧｲﾙ (*.mdb)|*.mdb"_s, .fileName = former, .folder = folder.path()});
        QCOMPARE(m_shown, 1);
        QCOMPARE(answer.value_or(u"cancelled"_s), former);
    }
};

QTEST_MAIN(TestRealDialogs)
#include "test_real_dialogs.moc"
