#include "tests/repository/source_tree.h"
#include "tests/support/compare_text.h"
#include "tests/support/held_key.h"
#include "tests/support/modal_script.h"
#include "tests/support/window_world.h"
#include "ui/auxiliary/frmManual.h"
#include "ui/auxiliary/manual_text.h"
#include "ui/main/frmMainMenu.h"
#include "ui/restore/frmRestore.h"
#include "ui/widgets/focus_colours.h"
#include "ui/widgets/help_key.h"
#include "ui/widgets/keyed_tree.h"

#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// The manual: its text, the page that is set of it, and F1 in every window.
class TestManualWindow : public QObject
{
    Q_OBJECT

    const QString folder = QString::fromUtf8(QUILLON_MANUAL);
    const SourceTree tree;
    std::unique_ptr<WindowWorld> world;

    QString page() const
    {
        QFile file(folder + u"/manual.html"_s);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    static QStringList allIn(const QString& text, const QString& pattern)
    {
        QStringList found;
        auto matches = QRegularExpression(pattern, QRegularExpression::MultilineOption).globalMatch(text);
        while (matches.hasNext())
            found << matches.next().captured(1);
        return found;
    }
    QStringList chaptersOfPage() const { return allIn(page(), u"<h2 id=\"([^\"]+)\""_s); }

    frmManual* manual() { return world->window<frmManual>(u"frmManual"_s); }
    static ManualText& text(QWidget& window)
    {
        return *WindowWorld::control<ManualText>(window, u"txtManual"_s);
    }
    static KeyedTree& contents(QWidget& window)
    {
        return *WindowWorld::control<KeyedTree>(window, u"tvwChapter"_s);
    }
    /// The chapter at which the manual is open.
    QString chapter()
    {
        frmManual* const window = manual();
        return window == nullptr || !window->isVisible()
                   ? QString()
                   : text(*window).source().fragment(QUrl::FullyDecoded);
    }
    static void pressF1(QWidget& receiver, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                        bool again = false)
    {
        QKeyEvent event(QEvent::KeyPress, Qt::Key_F1, modifiers, QString(), again);
        QCoreApplication::sendEvent(&receiver, &event);
        WindowWorld::processEvents();
    }

private Q_SLOTS:
    void init() { world = std::make_unique<WindowWorld>(folder); }
    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        QVERIFY2(world->eventLog.lines.isEmpty(), qPrintable(world->eventLog.lines.join(u'\n')));
        world.reset();
    }

    void everyChapterOfTheTextIsInThePage()
    {
        const QString source = tree.textOf(u"packaging/texts/Quillon 機能仕様.txt"_s).remove(u'\r');
        const QStringList written = allIn(source, u"^-{20,}\\n\\d+\\. ([^ \\n]+).*\\n-{20,}$"_s);
        QVERIFY(written.size() > 20);
        QCOMPARE(chaptersOfPage(), written);
    }

    void everyWordOfTheTextIsInThePage()
    {
        // Line breaks, what marks items and the lines between chapters are set in other ways.
        static const QRegularExpression notSaid(u"[\\s|│└・■-]|(?<=\\n)\\d+\\. "_s);
        QString source = tree.textOf(u"packaging/texts/Quillon 機能仕様.txt"_s);
        source.remove(0, source.indexOf(u"1. 概要"_s, source.indexOf(u"----"_s))).remove(u'\r');
        QString set = page();
        set.remove(0, set.indexOf(u"<h2"_s));
        set.remove(QRegularExpression(u"<[^>]*>"_s));
        set.replace(u"&lt;"_s, u"<"_s).replace(u"&gt;"_s, u">"_s).replace(u"&amp;"_s, u"&"_s);
        QVERIFY(compareText(set.remove(notSaid), source.remove(notSaid)));
    }

    void everyWindowHasAChapter()
    {
        const QStringList chapters = chaptersOfPage();
        const QString text = page();
        QStringList windows;
        for (const QString& path : tree.paths()) {
            if ((path.startsWith(u"ui/"_s) || path.startsWith(u"app/shell/"_s)) && path.endsWith(u".h"_s))
                windows << allIn(tree.textOf(path), u"^class (frm[A-Za-z]+)\\b[^;]*:"_s);
        }
        QVERIFY(windows.contains(u"frmMainMenu"_s) && windows.contains(u"frmRestore"_s));
        QVERIFY(windows.size() >= 13);
        for (const QString& window : windows)
            QVERIFY2(chapters.contains(manualChapterFor(window)), qPrintable(window));
        QVERIFY(chapters.contains(manualChapterFor(u"システムコマンド入力画面"_s)));
    }

    void pageShowsPicturesThatAreThereWithTheirDescriptions()
    {
        const QStringList pictures = allIn(page(), u"<img src=\"([^\"]+)\" alt=\"[^\"]+\">"_s);
        QCOMPARE(pictures.size(), page().count(u"<img"_s));
        QVERIFY(pictures.size() > 20);
        for (const QString& picture : pictures)
            QVERIFY2(!QImage(folder + u'/' + picture).isNull(), qPrintable(picture));
        // Nothing is brought that nobody sees.
        QCOMPARE(QDir(folder + u"/images"_s).entryList(QDir::Files).size(),
                 QSet(pictures.begin(), pictures.end()).size());
    }

    void linksOfThePageLeadSomewhere()
    {
        const QStringList links = allIn(page(), u"href=\"#([^\"]+)\""_s);
        QVERIFY(links.size() > 20);
        const QStringList chapters = chaptersOfPage();
        for (const QString& link : links)
            QVERIFY2(chapters.contains(link), qPrintable(link));
    }

    void pageNeedsNothingFromElsewhereAndFixesNoColour()
    {
        QVERIFY(!page().contains(u"http"_s));
        QVERIFY(!page().contains(u"style="_s));
        QFile file(folder + u"/manual.css"_s);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString style = QString::fromUtf8(file.readAll());
        QVERIFY(style.contains(u"@media (prefers-color-scheme: dark)"_s));
        // Both sets of colours name the same; everything else takes its colours from them.
        const QStringList names = allIn(style, u"^ +(--[a-z]+): #"_s);
        QVERIFY(names.size() >= 10 && names.size() % 2 == 0);
        QCOMPARE(names.mid(0, names.size() / 2), names.mid(names.size() / 2));
        QCOMPARE(style.count(u'#'), names.size());
    }

    void f1OpensTheChapterForTheWindow_data()
    {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("expected");
        const auto add = [](const QString& window, const QString& expected) {
            QTest::newRow(qPrintable(window)) << window << expected;
        };
        add(u"frmMainMenu"_s, u"メイン画面"_s);
        add(u"frmMainData"_s, u"定義データ画面"_s);
        add(u"frmRefDoc"_s, u"文献データ画面"_s);
        add(u"frmRefFileEntry"_s, u"ファイルデータ登録画面"_s);
        add(u"frmDataSelect"_s, u"データ選択画面"_s);
        add(u"frmCategory"_s, u"分類"_s);
        add(u"frmFind"_s, u"全文検索画面"_s);
        add(u"frmLinkList"_s, u"リンク情報表示画面"_s);
        add(u"frmEntryInfo"_s, u"データ登録状況表示画面"_s);
        add(u"frmSplash"_s, u"起動と終了"_s);
        add(u"frmManual"_s, u"機能仕様書画面"_s);
    }

    void f1OpensTheChapterForTheWindow()
    {
        QFETCH(QString, window);
        QFETCH(QString, expected);
        world->open(world->createDatabase());
        if (window != u"frmMainMenu"_s)
            world->program.windows().showAuxiliary(window);
        WindowWorld::processEvents();
        auto* const asking = world->window<FormWindow>(window);
        QVERIFY(asking != nullptr);
        // Wherever the keyboard is in it.
        QWidget* const focus = asking->focusWidget();
        pressF1(focus != nullptr ? *focus : *asking);
        QCOMPARE(chapter(), expected);
        QVERIFY(text(*manual()).textCursor().block().text().contains(expected));
        QVERIFY(text(*manual()).verticalScrollBar()->value() > 0);
        QCOMPARE(manual()->focusWidget(), &text(*manual()));
        QCOMPARE(contents(*manual()).nodes().key(contents(*manual()).selectedPosition()), expected);
        QCOMPARE(world->windowCount(u"frmManual"_s), 1);
    }

    void f1InTheWindowForTakingThingsBackOpensItsChapter()
    {
        world->program.restoreWindow().showModeless();
        pressF1(world->program.restoreWindow());
        QCOMPARE(chapter(), u"控えと復元"_s);
    }

    void windowThatAllOthersWaitForLetsTheManualBeRead()
    {
        // It has been read before, and is behind the window now.
        pressF1(world->mainWindow());
        QCOMPARE(chapter(), u"メイン画面"_s);
        QVERIFY(manual()->windowHandle()->transientParent() == nullptr);
        ModalScript script(world->program.windows());
        script.expect<FormWindow>(u"frmFind"_s, [&](FormWindow& find) {
            pressF1(find);
            QCOMPARE(chapter(), u"全文検索画面"_s);
            QCOMPARE(manual()->windowHandle()->transientParent(), find.windowHandle());
            QTest::keyClick(&contents(*manual()), Qt::Key_Home);
            QCOMPARE(chapter(), u"概要"_s);
            // From outside as well.
            QAccessibleInterface* const told = QAccessible::queryAccessibleInterface(&contents(*manual()));
            if (told == nullptr || told->tableInterface() == nullptr)
                QFAIL("the contents cannot be asked");
            QVERIFY(told->tableInterface()->selectRow(1));
            QTRY_VERIFY(chapter() != u"概要"_s);
            find.unload();
        });
        world->program.windows().sharedWindow(u"frmFind"_s).showModal();
        QCOMPARE(script.takeComplaints(), QStringList());
        // It stays open when that one has gone, and serves the others.
        pressF1(world->mainWindow());
        QCOMPARE(chapter(), u"メイン画面"_s);
        QVERIFY(manual()->windowHandle()->transientParent() == nullptr);
    }

    void boxHasTheChapterOfTheWindowThatShowsIt()
    {
        world->program.windows().showAuxiliary(u"frmFind"_s);
        QMessageBox box(world->window<FormWindow>(u"frmFind"_s));
        box.setText(u"?"_s);
        box.open();
        pressF1(box);
        QCOMPARE(chapter(), u"全文検索画面"_s);
        QCOMPARE(manual()->windowHandle()->transientParent(), box.windowHandle());
    }

    void consoleHasItsOwnChapter()
    {
        QInputDialog box(&world->mainWindow());
        box.setWindowTitle(u"システムコマンド入力画面 of its own"_s);
        box.open();
        pressF1(*box.findChild<QLineEdit*>());
        QCOMPARE(chapter(), u"システムコマンド"_s);
    }

    void f1InAMenuClosesItAndExplainsTheWindow()
    {
        auto* const menu = world->mainWindow().findChild<QMenu*>(u"mnuInfo"_s);
        menu->popup(QPoint(0, 0));
        QVERIFY(QApplication::activePopupWidget() != nullptr);
        pressF1(*menu);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
        QCOMPARE(chapter(), u"メイン画面"_s);
    }

    void onlyTheKeyAloneAndOnceAsksForHelp()
    {
        pressF1(world->mainWindow(), Qt::ShiftModifier);
        pressF1(world->mainWindow(), Qt::ControlModifier);
        pressF1(world->mainWindow(), Qt::NoModifier, true);
        QCOMPARE(world->windowCount(u"frmManual"_s), 0);
    }

    void missingPageIsToldWithItsPlace()
    {
        const QTemporaryDir empty;
        world.reset();
        world = std::make_unique<WindowWorld>(empty.path());
        world->dialogs.expect(MessageBox{.text = u"機能仕様書のファイルが見つかりませんでした。\r\n「"_s +
                                                 QDir::toNativeSeparators(empty.filePath(u"manual.html"_s)) +
                                                 u"」\r\nQuillon をインストールし直してください。"_s,
                                         .title = u"Quillon システム運用部"_s});
        pressF1(world->mainWindow());
        QCOMPARE(world->windowCount(u"frmManual"_s), 0);
    }

    void windowHasItsTexts()
    {
        pressF1(world->mainWindow());
        QVERIFY(compareText(manual()->windowTitle(), u"Quillon 機能仕様書"));
        QCOMPARE(contents(*manual()).accessibleName(), u"目次"_s);
        QCOMPARE(text(*manual()).accessibleName(), u"本文"_s);
        const QString plain = text(*manual()).toPlainText();
        QVERIFY(plain.startsWith(u"Quillon 機能仕様\n"_s));
        QVERIFY(plain.contains(u"Ctrl + ホイール"_s));
        QStringList listed;
        for (int position = 1; position <= contents(*manual()).nodes().nodeCount(); ++position)
            listed << contents(*manual()).nodes().key(position);
        QCOMPARE(listed, chaptersOfPage());
        QCOMPARE(contents(*manual()).nodes().text(4), u"4. メイン画面"_s);
    }

    void screenReaderReadsTheText()
    {
        pressF1(world->mainWindow());
        QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(&text(*manual()));
        QVERIFY(read != nullptr && read->textInterface() != nullptr);
        QCOMPARE(read->text(QAccessible::Name), u"本文"_s);
        // From where the chapter begins.
        const int caret = read->textInterface()->cursorPosition();
        QCOMPARE(read->textInterface()->text(caret, caret + 8), u"4. メイン画面"_s);
    }

    void contentsLeadToTheirChapters()
    {
        pressF1(world->mainWindow());
        KeyedTree& list = contents(*manual());
        QTest::keyClick(&list, Qt::Key_Down);
        QCOMPARE(chapter(), u"カテゴリツリー"_s);
        QTest::keyClick(&list, Qt::Key_End);
        QCOMPARE(chapter(), u"機能仕様書画面"_s);
        // Back to where one was, as the list shows too.
        QTest::keyClick(&text(*manual()), Qt::Key_Left, Qt::AltModifier);
        QCOMPARE(chapter(), u"カテゴリツリー"_s);
        QCOMPARE(list.nodes().key(list.selectedPosition()), u"カテゴリツリー"_s);
        QTest::keyClick(&text(*manual()), Qt::Key_Right, Qt::AltModifier);
        QCOMPARE(chapter(), u"機能仕様書画面"_s);
    }

    void linksAreReachedAndFollowedByKeys()
    {
        pressF1(world->mainWindow());
        ManualText& page = text(*manual());
        page.goTo(u"起動と終了"_s);
        QTest::keyClick(&page, Qt::Key_Tab);
        QCOMPARE(page.textCursor().selectedText(), u"20. 控えと復元"_s);
        QTest::keyClick(&page, Qt::Key_Return);
        QCOMPARE(chapter(), u"控えと復元"_s);
    }

    void keysChangePanesAndSizesAndCloseTheWindow()
    {
        pressF1(world->mainWindow());
        QApplication::setActiveWindow(manual());
        ManualText& page = text(*manual());
        page.setFocus();
        QTest::keyClick(manual(), Qt::Key_F6);
        QCOMPARE(manual()->focusWidget(), &contents(*manual()));
        QTest::keyClick(manual(), Qt::Key_F6, Qt::ShiftModifier);
        QCOMPARE(manual()->focusWidget(), &page);
        for (int time = 0; time < 3; ++time) {
            repeatKeyInWindow(*manual(), Qt::Key_F6);
            QCOMPARE(manual()->focusWidget(), &page);
        }

        const double before = page.font().pointSizeF();
        QTest::keyClick(&page, Qt::Key_Plus, Qt::ControlModifier);
        QVERIFY(page.font().pointSizeF() > before);
        QTest::keyClick(&page, Qt::Key_Minus, Qt::ControlModifier);
        QCOMPARE(page.font().pointSizeF(), before);

        QTest::keyClick(&page, Qt::Key_Escape);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmManual"_s), 0);
        pressF1(world->mainWindow());
        QTest::keyClick(&contents(*manual()), Qt::Key_Escape);
        WindowWorld::processEvents();
        QCOMPARE(world->windowCount(u"frmManual"_s), 0);
    }

    void allWindowsCloseAndThisOneToo()
    {
        world->open(world->createDatabase());
        pressF1(world->mainWindow());
        QVERIFY(WindowWorld::choose(world->mainWindow(), u"mnuDataCloseAll"_s));
        QCOMPARE(world->loadedNames(), QStringList({u"frmMainMenu"_s}));
    }

    void anotherDatabaseLeavesTheManualOpen()
    {
        pressF1(world->mainWindow());
        world->open(world->createDatabase());
        QCOMPARE(chapter(), u"メイン画面"_s);
    }

    void picturesKeepWithinTheRoom()
    {
        pressF1(world->mainWindow());
        ManualText& page = text(*manual());
        for (const int width : {800, 1200, 900}) {
            manual()->resize(width, 500);
            QTRY_COMPARE(page.horizontalScrollBar()->maximum(), 0);
        }
        // They are no smaller than they need to be.
        QVERIFY(page.document()->idealWidth() > page.viewport()->width() * 0.9);
    }

    void coloursFollowThePalette()
    {
        pressF1(world->mainWindow());
        ManualText& page = text(*manual());
        const auto fixedColours = [&] {
            QStringList found;
            for (QTextBlock block = page.document()->begin(); block.isValid(); block = block.next()) {
                for (auto it = block.begin(); !it.atEnd(); ++it) {
                    const QTextCharFormat format = it.fragment().charFormat();
                    if (format.foreground().style() != Qt::NoBrush && !format.isAnchor())
                        found << it.fragment().text();
                }
            }
            return found;
        };
        QCOMPARE(fixedColours(), QStringList());
        QPalette dark = page.palette();
        dark.setColor(QPalette::Base, Qt::black);
        dark.setColor(QPalette::AlternateBase, Qt::black);
        dark.setColor(QPalette::Text, Qt::white);
        const auto colourOfLinks = [&] {
            page.setPalette(dark);
            const QTextCursor link = page.document()->find(u"起動と終了"_s);
            return link.charFormat().isAnchor() ? link.charFormat().foreground().color() : QColor();
        };
        dark.setColor(QPalette::Link, Qt::yellow);
        QCOMPARE(colourOfLinks(), QColor(Qt::yellow));
        QCOMPARE(fixedColours(), QStringList());
        // What can be read on white paper alone does not stay.
        dark.setColor(QPalette::Link, Qt::blue);
        QVERIFY2(contrast(colourOfLinks(), Qt::black) >= 4.5, qPrintable(colourOfLinks().name()));
        QVERIFY(colourOfLinks() != QColor(Qt::white));
    }
};

QTEST_MAIN(TestManualWindow)
#include "test_manual_window.moc"
