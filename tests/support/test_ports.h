#pragma once

#include "app/base/ports/category_chooser.h"
#include "app/base/ports/clock.h"
#include "app/base/ports/data_selection.h"
#include "app/base/ports/data_window.h"
#include "app/base/ports/desktop.h"
#include "app/base/ports/event_log.h"
#include "app/base/ports/link_list_window.h"
#include "app/base/ports/main_window_port.h"
#include "app/base/ports/windows.h"
#include "app/base/system_files.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace quillon::testing
{

/// An event log in memory.
class MemoryEventLog : public EventLog
{
public:
    void write(const QString& line) override { lines << line; }
    QStringList lines;
};

/// A clock that stands still: at first 31 December 1999, 23:45:06.
class FixedClock : public Clock
{
public:
    QDateTime now() const override { return time; }
    QString shortDate() const override { return time.date().toString(u"yyyy/MM/dd"); }
    QString shortTime() const override { return time.time().toString(u"HH:mm"); }
    QString identifierDate() const override { return dateText.isNull() ? Clock::identifierDate() : dateText; }

    QDateTime time{QDate(1999, 12, 31), QTime(23, 45, 6)};
    QString dateText; // what identifiers get instead of yy/mm/dd, when set
};

/// A desktop that only writes down what it was asked to open.
class RecordingDesktop : public Desktop
{
public:
    OpenOutcome open(const QString& path) override
    {
        opened << path;
        return outcome;
    }
    QStringList opened;
    OpenOutcome outcome = OpenOutcome::Opened;
};

/// The file system as it is, unless a test lets copying fail.
class RealFiles : public SystemFiles
{
public:
    void copyInto(const QString& source, const QString& folder, const QString& name,
                  const Progress& progress) const override;

    qint32 copyFailure = 0; // the number of the failure that every copy ends in, when set
};

/// A main window without a window: it writes down what operations do to it.
class FakeMainWindow : public MainWindowPort, public LoadedWindow
{
public:
    struct Node {
        QString key;
        QString text;
        QString parentKey;
    };

    QString windowName() const override { return QStringLiteral("frmMainMenu"); }
    bool unload() override { return false; }
    void bringToFront() override {}
    void showModeless() override {}
    void showModal() override {}

    void clearDataList() override { calls << QStringLiteral("clear list"); }
    void setStatus(int panel, const QString& text) override;
    void enableDatabaseMenus() override { calls << QStringLiteral("enable menus"); }
    void rebuildCategoryTree() override { calls << QStringLiteral("rebuild tree"); }
    int selectedNodeIndex() const override { return selected; }
    int nodeCount() const override { return static_cast<int>(nodes.size()); }
    QString nodeKey(int index) const override { return node(index).key; }
    QString nodeText(int index) const override { return node(index).text; }
    QString nodeParentKey(int index) const override { return node(index).parentKey; }

    QStringList calls; // in order, status texts as "1: text"
    std::vector<Node> nodes;
    int selected = 0;

private:
    const Node& node(int index) const;
};

/// A data window without a window.
class FakeDataWindow : public DataWindow
{
public:
    explicit FakeDataWindow(const QString& designName) : name(designName) {}

    QString windowName() const override { return name; }
    bool unload() override;
    void bringToFront() override { ++broughtToFront; }
    QString fieldText(int index) const override { return fields[index]; }
    void setFieldText(int index, const QString& text) override { fields[index] = text; }
    void setCaption(const QString& text) override { caption = text; }
    QString modeText() const override { return mode; }
    void setModeText(const QString& text) override { mode = text; }
    void setMenuEnabled(const QString& menuName, bool enabled) override;
    void setLinkRows(const std::vector<LinkRow>& rows) override { links = rows; }
    void setCategoryRows(const std::vector<CategoryRow>& rows) override { categories = rows; }
    std::vector<CategoryRow> categoryRows() const override { return categories; }
    void showModeless() override { ++shown; }
    void showModal() override;

    QString name;
    QString fields[3];
    QString caption;
    QString mode;
    QStringList menuCalls; // "+mnuLink" enabled, "-mnuLink" disabled
    std::vector<LinkRow> links;
    std::vector<CategoryRow> categories;
    int shown = 0;
    int broughtToFront = 0;
    bool closes = true;               // answers an unload
    std::function<void()> whileModal; // what the person does in a modal showing
    std::function<void()> onUnload;
};

/// A data selection window without a window.
class FakeDataSelection : public DataSelection
{
public:
    QString windowName() const override { return QStringLiteral("frmDataSelect"); }
    bool unload() override { return true; }
    void bringToFront() override {}
    void showModeless() override { calls << QStringLiteral("show"); }
    void showModal() override;
    void clearRows() override;
    std::unique_ptr<DataRowFill> fillRows() override;
    QString caption() const override { return title; }
    void setCaption(const QString& text) override { title = text; }
    void setStatus(int panel, const QString& text) override;

    QString title = QStringLiteral("データ選択画面");
    QStringList rows;  // each as its cells joined by "|"
    QStringList calls; // in order: "clear", "show", "show modal", status texts as "1: text"
    std::function<void()> whileModal;
};

/// A category chooser without a window.
class FakeCategoryChooser : public CategoryChooser
{
public:
    QString windowName() const override { return QStringLiteral("frmCategory"); }
    bool unload() override;
    void bringToFront() override {}
    void showModeless() override {}
    void showModal() override;
    void setNodes(const std::vector<ChooserNode>& chooserNodes) override { nodes = chooserNodes; }
    void expandNode(int position) override { expanded.push_back(position); }

    std::vector<ChooserNode> nodes;
    std::vector<int> expanded;
    int shown = 0;
    int unloads = 0;
    std::function<void()> whileModal;
};

/// A link list window without a window.
class FakeLinkList : public LinkListWindow
{
public:
    QString windowName() const override { return QStringLiteral("frmLinkList"); }
    bool unload() override { return true; }
    void bringToFront() override {}
    void showModeless() override { ++shown; }
    void showModal() override {}
    void reset() override;
    std::unique_ptr<LinkRowFill> fillRows() override;
    void setCount(const QString& text) override { count = text; }

    QStringList rows; // each as its cells joined by "|"
    QString count;
    int shown = 0;
    int resets = 0;
};

/// Windows without a window system.
class FakeWindows : public Windows
{
public:
    std::vector<LoadedWindow*> loaded() const override { return list; }
    DataWindow& newDataWindow(const QString& kind) override;
    DataWindow& registrationWindow(const QString& kind) override;
    DataSelection& dataSelection() override { return selection; }
    CategoryChooser& categoryChooser() override { return chooser; }
    LinkListWindow& linkList() override;
    LinkListWindow* loadedLinkList() override { return linksLoaded ? &links : nullptr; }
    void showAuxiliary(const QString& windowName) override { auxiliaries << windowName; }

    FakeDataSelection selection;
    FakeCategoryChooser chooser;
    FakeLinkList links;
    bool linksLoaded = false;
    std::vector<LoadedWindow*> list;
    std::vector<std::unique_ptr<FakeDataWindow>> dataWindows; // in the order of creation
    FakeDataWindow* shared[3] = {nullptr, nullptr, nullptr};
    QStringList auxiliaries;

private:
    FakeDataWindow& create(const QString& kind);
};

} // namespace quillon::testing
