// Every window on screens of several sizes, at several scales and with fonts of several sizes: it is no larger than the
// screen, and nothing in it is cut off, covered or out of reach.
#include "app/base/twips.h"
#include "app/shell/frmSplash.h"
#include "app/shell/japanese_interface.h"
#include "app/shell/real_dialogs.h"
#include "core/data_records.h"
#include "core/links.h"
#include "core/registration_window.h"
#include "tests/auxiliary/search_world.h"
#include "tests/restore/restore_world.h"
#include "ui/auxiliary/frmCategory.h"
#include "ui/auxiliary/frmManual.h"
#include "ui/restore/frmKeptDatabases.h"
#include "ui/widgets/screen_room.h"
#include "ui/widgets/window_contents.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QScreen>
#include <QScrollBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

#include <cstdio>
#include <cstring>
#include <deque>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

constexpr auto AsRun = "--as-a-run";

const QString Water = u"M-991231-001"_s;
const QString Book = u"R-991231-001"_s;
const QString LongName = u"とても長い名前を持っている項目のとても長い名前です"_s;

QString textOf(const QRect& place)
{
    return u"%1,%2 %3x%4"_s.arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height());
}

QString nameOf(const QWidget& widget)
{
    return QString::fromLatin1(widget.metaObject()->className()) + u" "_s + widget.objectName();
}

/// Looks at one window, and notes what is wrong with it.
class Look
{
public:
    Look(QWidget& window, QString title, QStringList& found)
        : m_window(window), m_title(std::move(title)), m_found(found)
    {
        WindowWorld::processEvents();
        theWindow();
        const QList<QWidget*> widgets = window.findChildren<QWidget*>();
        for (const QWidget* widget : widgets) {
            if (!widget->isVisibleTo(&window) || widget->isWindow() || isPartOfControl(*widget))
                continue;
            size(*widget);
            place(*widget);
            neighbours(*widget);
            if (qobject_cast<const QPushButton*>(widget) != nullptr)
                button(*widget);
        }
    }

private:
    void note(const QString& what) { m_found << m_title + u": "_s + what; }

    /// Whether the screen has room for a frame, a menu bar, a status bar, a row of buttons and a few lines.
    bool isScreenUsable() const
    {
        const QSize screen = m_window.screen()->availableSize();
        const int line = m_window.fontMetrics().height();
        return screen.width() >= 24 * line && screen.height() >= 16 * line;
    }

    /// What a control of the toolkit has in it is its own business.
    bool isPartOfControl(const QWidget& widget) const
    {
        for (const QWidget* parent = widget.parentWidget(); parent != nullptr && parent != &m_window;
             parent = parent->parentWidget()) {
            const auto* area = qobject_cast<const QAbstractScrollArea*>(parent);
            if ((area != nullptr && qobject_cast<const QScrollArea*>(parent) == nullptr) ||
                qobject_cast<const QLineEdit*>(parent) != nullptr ||
                qobject_cast<const QComboBox*>(parent) != nullptr ||
                qobject_cast<const QMenuBar*>(parent) != nullptr ||
                qobject_cast<const QTabBar*>(parent) != nullptr)
                return true;
        }
        // The bars of an area that scrolls, and what the person drags.
        const QString name = widget.objectName();
        return name.startsWith(u"qt_scrollarea"_s) || name == u"imgSplitter"_s ||
               name == u"qt_splithandle"_s || qobject_cast<const QScrollBar*>(&widget) != nullptr ||
               widget.inherits("QAbstractScrollAreaScrollBarContainer") || widget.inherits("QSizeGrip") ||
               widget.inherits("QTabBar") || widget.inherits("QSplitterHandle") ||
               widget.inherits("QFocusFrame") || widget.inherits("QRubberBand") ||
               widget.cursor().shape() == Qt::SizeHorCursor;
    }

    void theWindow()
    {
        const QRect screen = m_window.screen()->availableGeometry();
        if (!screen.contains(m_window.frameGeometry()))
            note(u"at %1 on a screen of %2"_s.arg(textOf(m_window.frameGeometry()), textOf(screen)));
    }

    void size(const QWidget& widget)
    {
        // A least size that was set counts instead of what the control would like to have.
        const QSize hint = widget.minimumSizeHint();
        const QSize least(widget.minimumWidth() > 0 ? widget.minimumWidth() : hint.width(),
                          widget.minimumHeight() > 0 ? widget.minimumHeight() : hint.height());
        const auto* label = qobject_cast<const QLabel*>(&widget);
        if (qobject_cast<const QStatusBar*>(widget.parentWidget()) != nullptr) {
            // Such a panel ends in an ellipsis, and its tool tip tells all of it.
            if (label != nullptr && label->fontMetrics().horizontalAdvance(label->text()) > label->width() &&
                label->toolTip() != label->text() &&
                !label->toolTip().contains(label->text().toHtmlEscaped()))
                note(u"no tool tip for the cut "_s + label->text());
            if (widget.height() < least.height())
                note(nameOf(widget) + u" is too low"_s);
            return;
        }
        const bool hasText = label != nullptr || qobject_cast<const QAbstractButton*>(&widget) != nullptr ||
                             qobject_cast<const QLineEdit*>(&widget) != nullptr ||
                             qobject_cast<const QComboBox*>(&widget) != nullptr;
        if (!hasText || widget.parentWidget()->inherits("QTabBar"))
            return;
        int height = least.height();
        if (label != nullptr && label->wordWrap())
            height = label->heightForWidth(label->width());
        const int width = label != nullptr && label->wordWrap() ? 0 : least.width();
        if (widget.width() < width || widget.height() < height)
            note(u"%1 is %2x%3 and needs %4x%5"_s.arg(nameOf(widget))
                     .arg(widget.width())
                     .arg(widget.height())
                     .arg(width)
                     .arg(height));
    }

    /// Nothing may reach out of what holds it, unless that scrolls.
    void place(const QWidget& widget)
    {
        const QWidget* parent = widget.parentWidget();
        const auto* area = qobject_cast<const QScrollArea*>(parent->parentWidget());
        if (area != nullptr && area->viewport() == parent) {
            const QSize beyond = widget.size() - parent->size();
            const bool reached =
                beyond.width() <= area->horizontalScrollBar()->maximum() &&
                beyond.height() <= area->verticalScrollBar()->maximum() &&
                (beyond.width() <= 0 || area->horizontalScrollBarPolicy() != Qt::ScrollBarAlwaysOff) &&
                (beyond.height() <= 0 || area->verticalScrollBarPolicy() != Qt::ScrollBarAlwaysOff);
            if (!reached)
                note(nameOf(widget) + u" cannot be scrolled to its end"_s);
            const QSize room = roomInUsualFrame(m_window) - m_window.size();
            if (qobject_cast<const FormWindow*>(&m_window) == nullptr)
                return; // a box keeps away from the edges of the screen
            if ((room.height() > 0 && area->verticalScrollBar()->maximum() > 0) ||
                (room.width() > 0 && area->horizontalScrollBar()->maximum() > 0 &&
                 area->verticalScrollBar()->maximum() == 0))
                note(nameOf(widget) + u" scrolls although the screen has room for it"_s);
            return;
        }
        if (!parent->rect().contains(widget.geometry()))
            note(u"%1 at %2 reaches out of %3 %4"_s.arg(nameOf(widget), textOf(widget.geometry()),
                                                        nameOf(*parent), textOf(parent->rect())));
    }

    void neighbours(const QWidget& widget)
    {
        const auto siblings =
            widget.parentWidget()->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget* other : siblings) {
            // Each pair once.
            if (other <= &widget || !other->isVisibleTo(&m_window) || other->isWindow() ||
                isPartOfControl(*other))
                continue;
            if (widget.geometry().intersects(other->geometry()))
                note(nameOf(widget) + u" and "_s + nameOf(*other) + u" lie on each other"_s);
        }
    }

    void button(const QWidget& widget)
    {
        if (!isScreenUsable())
            return;
        // Buttons beside a field scroll with it where the screen is small.
        const QRect screen(QPoint(0, 0), m_window.screen()->availableSize());
        const bool answers = widget.objectName().startsWith(u"cmd"_s) ? isInBottomRow(widget) : true;
        const int line = m_window.fontMetrics().height();
        const bool isSmall = screen.width() < 640 || screen.height() < std::max(400, 22 * line) || line > 22;
        if (!answers && isSmall)
            return;
        if (widget.visibleRegion().boundingRect() != widget.rect())
            note(nameOf(widget) + u" is not in view"_s);
    }

    bool isInBottomRow(const QWidget& widget) const
    {
        const auto* contents = m_window.findChild<WindowContents*>();
        return contents != nullptr && widget.parentWidget() == contents->widget();
    }

    QWidget& m_window;
    QString m_title;
    QStringList& m_found;
};

/// Looks at the dialogs as the person sees them.
class DialogLook : public QObject
{
public:
    explicit DialogLook(QStringList& found) : m_found(found) {}

    template <class Action> void at(const QString& title, const Action& shows)
    {
        int shown = 0;
        QTimer::singleShot(0, this, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (dialog == nullptr)
                return;
            ++shown;
            const Look look(*dialog, title, m_found);
            dialog->close();
        });
        shows();
        if (shown == 0)
            m_found << title + u": it does not come"_s;
    }

private:
    QStringList& m_found;
};

void lookAtBoxes(QStringList& found)
{
    RealDialogs dialogs;
    DialogLook look(found);
    const auto box = [&](const QString& title, const MessageBox& shown) {
        look.at(title, [&] { dialogs.messageBox(shown); });
    };
    box(u"a notice"_s, {.text = u"更新しました。"_s});
    box(u"a notice with an icon"_s,
        {.text =
             u"「"_s + LongName + u"」は更新の後で削除されています。先に削除されたものを戻してください。"_s,
         .title = u"Quillon データ復元部"_s,
         .icon = Icon::Information});
    box(u"a question"_s,
        {.text = u"<"_s + LongName + u"> と <"_s + LongName + u"> のリンクを削除しますか。"_s,
         .buttons = Buttons::YesNo});
    box(u"a question of three answers"_s,
        {.text = u"現在のデータを更新しますか。"_s, .buttons = Buttons::YesNoCancel});
    box(u"a long text"_s, {.text = (u"長い文章"_s.repeated(30) + u"\r\n"_s).repeated(40),
                           .title = LongName,
                           .buttons = Buttons::OkCancel,
                           .icon = Icon::Information});
    box(u"a long path"_s, {.text = u"「"_s + u"/home/person/very_long_name_of_a_folder"_s.repeated(12) +
                                   u"」がありません。"_s});
    look.at(u"an input box"_s, [&] {
        dialogs.inputBox({.prompt = u"新しいカテゴリの名称を入力してください。\r\n（全角で25文字以内）"_s,
                          .title = u"Quillon カテゴリ管理部"_s,
                          .content = LongName});
    });
    look.at(u"an input box with a long prompt"_s,
            [&] { dialogs.inputBox({.prompt = LongName.repeated(6), .title = LongName}); });
    look.at(u"a dialog for opening"_s, [&] {
        dialogs.fileDialog({.purpose = FileDialog::Purpose::Open, .filter = u"データベース (*.mdb)|*.mdb"_s});
    });
    look.at(u"a dialog for saving"_s, [&] {
        dialogs.fileDialog({.purpose = FileDialog::Purpose::Save, .fileName = u"QUILLON.mdb"_s});
    });
}

void lookAtWindows(QStringList& found)
{
    SearchWorld world;
    world.addDefinition(LongName, Water, u"流れるもの"_s);
    world.addDocument(LongName, Book, u"内容\r\n"_s.repeated(60));
    world.addFile(LongName, u"F-991231-001"_s, u"file.txt"_s);
    WindowWorld::addRow(world.session().RsLink, {Water, Book});
    WindowWorld::addRow(world.session().RsCategoryID, {u"A"_s, LongName});
    WindowWorld::addRow(world.session().RsCategory, {u"A"_s, Water});
    world.open(world.path);
    const auto look = [&](LoadedWindow& shown, const QString& title) {
        shown.showModeless();
        const Look done(dynamic_cast<QWidget&>(shown), title, found);
    };
    look(world.mainWindow(), u"main window"_s);
    for (const auto& [identifier, name] :
         {std::pair(Water, u"frmMainData"_s), std::pair(Book, u"frmRefDoc"_s)}) {
        ShowData(world.session(), identifier);
        auto* form = world.window<FormWindow>(name);
        look(*form, name);
        // With the bar for searching in the text.
        auto* text = WindowWorld::control<QPlainTextEdit>(*form, u"txtFields(2)"_s);
        QTest::keyClick(text, Qt::Key_F, Qt::ControlModifier);
        look(*form, name + u" with its bar"_s);
        if (!WindowWorld::control<QWidget>(*form, u"findBar"_s)->isVisible())
            found << name + u": its bar does not come"_s;
    }
    for (const QString& kind : {u"M"_s, u"R"_s, u"F"_s})
        look(dynamic_cast<LoadedWindow&>(*newRegistration(world.session(), kind)),
             u"registration of "_s + kind);
    auto* copying = world.window<FormWindow>(u"frmRefFileEntry"_s)->findChild<QProgressBar*>();
    copying->show();
    look(*world.window<FormWindow>(u"frmRefFileEntry"_s), u"registration with its progress"_s);
    look(world.searchWindow(), u"frmFind"_s);
    world.search(u"長い"_s);
    look(*world.window<FormWindow>(u"frmDataSelect"_s), u"frmDataSelect"_s);
    SetAllLinkList(world.session());
    look(*world.window<FormWindow>(u"frmLinkList"_s), u"frmLinkList"_s);
    CategoryChooser& chooser = world.session().windows.categoryChooser();
    chooser.setNodes({{.parentKey = {}, .key = u"ROOT"_s, .text = u"カテゴリ"_s},
                      {.parentKey = u"ROOT"_s, .key = u"A"_s, .text = LongName}});
    look(chooser, u"frmCategory"_s);
    for (const QString& name : {u"frmEntryInfo"_s, u"frmSplash"_s}) {
        world.session().windows.showAuxiliary(name);
        look(*world.window<FormWindow>(name), name);
    }
    auto* splash = new frmSplash(world.session(), world.program.windows());
    splash->startTiming();
    splash->findChild<QTimer*>()->stop(); // on a slow computer it would go while it is looked at
    look(*splash, u"splash"_s);
    auto* information = new frmSplash(world.session(), world.program.windows());
    information->showInformation();
    look(*information, u"system information"_s);
    look(*new frmKeptDatabases(world.session(), world.program.windows()), u"frmKeptDatabases"_s);
    auto* manual = new frmManual(world.session(), world.program.windows(), QString::fromUtf8(QUILLON_MANUAL));
    manual->showChapter(u"キー操作の一覧"_s, world.mainWindow());
    look(*manual, u"frmManual"_s);
    found << world.dialogs.takeComplaints();
}

void lookAtRestoring(QStringList& found)
{
    RestoreWorld world;
    world.change(RestoreWorld::Fire, u"炎"_s, u"燃えるもの\r\n"_s.repeated(20));
    world.makeCopy();
    world.show();
    auto* pages = world.control<QTabWidget>(u"tabPages"_s);
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        const Look look(world.window(), u"frmRestore, page %1"_s.arg(page), found);
    }
    found << world.dialogs.takeComplaints();
}

QStringList wrongOnThisScreen()
{
    setUpJapaneseInterface(*qApp);
    QStringList found;
    lookAtWindows(found);
    lookAtRestoring(found);
    lookAtBoxes(found);
    return found;
}

/// The sizes of the windows that are written down.
QStringList sizesOnThisScreen()
{
    setUpJapaneseInterface(*qApp);
    SearchWorld world;
    world.addDefinition(u"水"_s, Water, u"流れるもの"_s);
    ShowData(world.session(), Water);
    const auto text = [](const QWidget& window) {
        return u"%1 %2x%3"_s.arg(window.objectName()).arg(window.width()).arg(window.height());
    };
    world.search(u"水"_s);
    QStringList sizes = {text(world.mainWindow()), text(*world.window<FormWindow>(u"frmMainData"_s)),
                         text(*world.window<FormWindow>(u"frmDataSelect"_s))};
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (const QWidget* window : windows) {
        const auto areas = window->findChildren<ScrolledArea*>();
        for (const ScrolledArea* area : areas) {
            if (area->isVisible() &&
                (area->horizontalScrollBar()->maximum() > 0 || area->verticalScrollBar()->maximum() > 0))
                sizes << window->objectName() + u" scrolls"_s;
        }
    }
    return sizes + world.dialogs.takeComplaints();
}

struct Screen {
    QSize size; // in its own pixels
    int percent = 100;
    int dpi = 96; // of the fonts
};

/// Runs this program on a screen of its own, and gives back what it says.
class Run
{
public:
    Run(const Screen& screen, const QString& what)
    {
        if (!m_file.open())
            qFatal("cannot describe the screen");
        const QJsonObject one{{u"name"_s, u"screen"_s},
                              {u"x"_s, 0},
                              {u"y"_s, 0},
                              {u"width"_s, screen.size.width()},
                              {u"height"_s, screen.size.height()},
                              {u"logicalDpi"_s, 96},
                              {u"logicalBaseDpi"_s, 96},
                              {u"dpr"_s, 1}};
        m_file.write(QJsonDocument(QJsonObject{{u"screens"_s, QJsonArray{one}}}).toJson());
        m_file.close();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen:configfile="_s + QFileInfo(m_file).fileName());
        environment.insert(u"QT_SCALE_FACTOR"_s, QString::number(screen.percent / 100.0));
        // The fonts alone: else the toolkit would scale everything by them.
        environment.insert(u"QT_ENABLE_HIGHDPI_SCALING"_s, u"0"_s);
        environment.insert(u"QT_FONT_DPI"_s, QString::number(screen.dpi));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(AsRun), what});
    }

    QString output()
    {
        if (!m_process.waitForFinished(300'000))
            return u"the run does not end"_s;
        // Without what one system puts before the end of a line.
        const QString output = QString::fromUtf8(m_process.readAllStandardOutput()).remove(u'\r');
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0
                   ? output
                   : output + u"\nit failed"_s;
    }

private:
    // In the folder where both work: a whole path could hold a colon, which ends the name of the description.
    QTemporaryFile m_file{u"screen-XXXXXX.json"_s};
    QProcess m_process;
};

} // namespace

class TestScreens : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void designedSizesStayWhereTheyFit()
    {
        Run run({.size = {1280, 800}}, u"sizes"_s);
        QCOMPARE(run.output().split(u'\n'),
                 QStringList({u"frmMainMenu 1120x733"_s, u"frmMainData 640x480"_s, u"frmDataSelect 640x420"_s,
                              u"1280x800 of 96 dpi"_s}));
    }

    void everyWindowFitsEveryScreen_data()
    {
        QTest::addColumn<QSize>("size");
        for (const QSize& size : {QSize(800, 600), QSize(1024, 600), QSize(1280, 800)})
            QTest::addRow("%dx%d", size.width(), size.height()) << size;
    }

    void everyWindowFitsEveryScreen()
    {
        QFETCH(QSize, size);
        std::vector<Screen> screens;
        for (const int percent : {100, 150, 200, 300}) {
            for (const int dpi : {96, 144, 192})
                screens.push_back({.size = size, .percent = percent, .dpi = dpi});
        }
        QStringList wrong;
        std::deque<std::pair<Screen, std::unique_ptr<Run>>> running;
        const auto finish = [&] {
            const auto& [screen, run] = running.front();
            const QStringList lines = run->output().split(u'\n');
            const QString title = u"%1 %, %2 dpi: "_s.arg(screen.percent).arg(screen.dpi);
            // The run tells on which screen it was.
            const QString screenSize = u"%1x%2 of %3 dpi"_s.arg(qRound(size.width() * 100.0 / screen.percent))
                                           .arg(qRound(size.height() * 100.0 / screen.percent))
                                           .arg(screen.dpi);
            if (lines.constLast() != screenSize)
                wrong << title + u"not on its screen, but on "_s + lines.constLast();
            for (const QString& line : lines.first(lines.size() - 1))
                wrong << title + line;
            running.pop_front();
        };
        constexpr std::size_t AtOnce = 2;
        for (const Screen& screen : screens) {
            if (running.size() == AtOnce)
                finish();
            running.emplace_back(screen, std::make_unique<Run>(screen, u"walk"_s));
        }
        while (!running.empty())
            finish();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(u'\n')));
    }
};

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc > 2 && std::strcmp(argv[1], AsRun) == 0) {
        QStringList lines = std::strcmp(argv[2], "walk") == 0 ? wrongOnThisScreen() : sizesOnThisScreen();
        const QScreen* screen = QGuiApplication::primaryScreen();
        lines << u"%1x%2 of %3 dpi"_s.arg(screen->size().width())
                     .arg(screen->size().height())
                     .arg(qRound(screen->logicalDotsPerInch()));
        const QByteArray text = lines.join(u'\n').toUtf8();
        static_cast<void>(std::fwrite(text.constData(), 1, static_cast<std::size_t>(text.size()), stdout));
        return 0;
    }
    TestScreens test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_screens.moc"
