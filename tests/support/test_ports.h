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
#include "tests/support/call_log.h"

#include <QStringList>

#include <array>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace quillon::testing
{

// Every double writes what it is asked to do into a call log: into its own, or into the one it is made with.

/// An event log in memory.
class MemoryEventLog : public EventLog
{
public:
    explicit MemoryEventLog(CallLog log = {}) : calls(std::move(log)) {}

    void write(const QString& line) override
    {
        calls.note(QStringLiteral("log ") + line);
        lines << line;
    }

    CallLog calls;
    QStringList lines;
};

/// A clock that stands still: at first 31 December 1999, 23:45:06.
class FixedClock : public Clock
{
public:
    QDateTime now() const override { return time; }
    QString shortDate() const override { return time.date().toString(u"yyyy/MM/dd"); }
    QString shortTime() const override { return time.time().toString(u"HH:mm"); }
    qint64 milliseconds() const override { return time.toMSecsSinceEpoch(); }
    QString identifierDate() const override { return dateText.isNull() ? Clock::identifierDate() : dateText; }

    QDateTime time{QDate(1999, 12, 31), QTime(23, 45, 6)};
    QString dateText; // what identifiers get instead of yy/mm/dd, when set
};

/// A desktop that only writes down what it was asked to open, and what it was told of.
class RecordingDesktop : public Desktop
{
public:
    explicit RecordingDesktop(CallLog log = {}) : calls(std::move(log)) {}

    OpenOutcome open(const QString& path) override
    {
        calls.note(QStringLiteral("open ") + path);
        opened << path;
        return outcome;
    }
    void noteRecent(const QString& path) override { recent << path; }

    CallLog calls;
    QStringList opened;
    QStringList recent; // not among the calls: nothing depends on when it happens
    OpenOutcome outcome = OpenOutcome::Opened;
};

/// The file system as it is, unless a test lets copying fail.
class RealFiles : public SystemFiles
{
public:
    explicit RealFiles(CallLog log = {}) : calls(std::move(log)) {}

    std::unique_ptr<StagedCopy> stageCopy(const QString& source, const QString& folder, const QString& name,
                                          const Progress& progress) const override;

    mutable CallLog calls;
    qint32 copyFailure = 0;             // the number of the failure that every copy ends in, when set
    std::function<void()> whileCopying; // runs whenever a copy has told how far it is
};

/// A main window without a window.
class FakeMainWindow : public MainWindowPort, public LoadedWindow
{
public:
    struct Node {
        QString key;
        QString text;
        QString parentKey;
    };

    explicit FakeMainWindow(CallLog log = {}) : calls(std::move(log)) {}

    QString windowName() const override { return QStringLiteral("frmMainMenu"); }
    bool unload() override;
    void bringToFront() override { note(QStringLiteral("bringToFront")); }
    void showModeless() override { note(QStringLiteral("showModeless")); }
    void showModal() override { note(QStringLiteral("showModal")); }

    std::unique_ptr<Shown> clearDataList() override;
    void setStatus(int panel, const QString& text) override;
    void enableDatabaseMenus() override { note(QStringLiteral("enableDatabaseMenus")); }
    void rebuildCategoryTree() override { note(QStringLiteral("rebuildCategoryTree")); }
    int selectedNodeIndex() const override { return selected; }
    int nodeCount() const override { return static_cast<int>(nodes.size()); }
    QString nodeKey(int index) const override { return node(index).key; }
    QString nodeText(int index) const override { return node(index).text; }
    QString nodeParentKey(int index) const override { return node(index).parentKey; }

    CallLog calls;
    std::vector<Node> nodes;
    int selected = 0;

private:
    void note(const QString& call) { calls.note(QStringLiteral("frmMainMenu.") + call); }
    const Node& node(int index) const;
};

/// A data window without a window.
class FakeDataWindow : public DataWindow
{
public:
    explicit FakeDataWindow(QString designName, CallLog log = {})
        : calls(std::move(log)), name(std::move(designName))
    {
    }

    QString windowName() const override { return name; }
    bool unload() override;
    bool mayUnload() override;
    void bringToFront() override { note(QStringLiteral("bringToFront")); }
    QString fieldText(int index) const override { return fields[static_cast<std::size_t>(index)]; }
    void setFieldText(int index, const QString& text) override;
    void setCaption(const QString& text) override;
    void setMode(FormMode mode) override;
    /// Emptying a list that is empty is not worth a line in the log, here and for the categories.
    void setLinkRows(const std::vector<LinkRow>& rows) override;
    void setCategoryRows(const std::vector<CategoryRow>& rows) override;
    std::vector<CategoryRow> categoryRows() const override { return categories; }
    void setRow(const DatumRow& datumRow) override { shownRow = datumRow; }
    DatumRow row() const override { return shownRow; }
    void showModeless() override { note(QStringLiteral("showModeless")); }
    void showModal() override;

    CallLog calls;
    QString name;
    std::array<QString, 3> fields;
    QString caption;
    std::vector<LinkRow> links;
    std::vector<CategoryRow> categories;
    DatumRow shownRow;
    bool closes = true;               // answers an unload, and whether it may unload
    std::function<void()> whileModal; // what the person does in a modal showing
    std::function<void()> onUnload;

private:
    void note(const QString& call) { calls.note(name + u'.' + call); }
};

/// A data selection window without a window.
class FakeDataSelection : public DataSelection
{
public:
    explicit FakeDataSelection(CallLog log = {}) : calls(std::move(log)) {}

    QString windowName() const override { return QStringLiteral("frmDataSelect"); }
    bool unload() override;
    void bringToFront() override { note(QStringLiteral("bringToFront")); }
    void showModeless() override { note(QStringLiteral("showModeless")); }
    void showModal() override;
    void clearRows() override;
    std::unique_ptr<DataRowFill> fillRows(const QString& searched) override;
    QString caption() const override { return title; }
    void setCaption(const QString& text) override;
    void setStatus(int panel, const QString& text) override;

    CallLog calls;
    QString title = QStringLiteral("データ選択画面");
    QStringList rows; // each as its cells joined by "|"
    std::function<void()> whileModal;

private:
    void note(const QString& call) { calls.note(QStringLiteral("frmDataSelect.") + call); }
};

/// A category chooser without a window.
class FakeCategoryChooser : public CategoryChooser
{
public:
    explicit FakeCategoryChooser(CallLog log = {}) : calls(std::move(log)) {}

    QString windowName() const override { return QStringLiteral("frmCategory"); }
    bool unload() override;
    void bringToFront() override { note(QStringLiteral("bringToFront")); }
    void showModeless() override { note(QStringLiteral("showModeless")); }
    void showModal() override;
    void setNodes(const std::vector<ChooserNode>& chooserNodes) override;
    void expandNode(int position) override;

    CallLog calls;
    std::vector<ChooserNode> nodes;
    std::function<void()> whileModal;

private:
    void note(const QString& call) { calls.note(QStringLiteral("frmCategory.") + call); }
};

/// A link list window without a window.
class FakeLinkList : public LinkListWindow
{
public:
    explicit FakeLinkList(CallLog log = {}) : calls(std::move(log)) {}

    QString windowName() const override { return QStringLiteral("frmLinkList"); }
    bool unload() override;
    void bringToFront() override { note(QStringLiteral("bringToFront")); }
    void showModeless() override { note(QStringLiteral("showModeless")); }
    void showModal() override { note(QStringLiteral("showModal")); }
    void reset() override;
    std::unique_ptr<LinkRowFill> fillRows() override;
    void setCount(const QString& text) override;

    CallLog calls;
    QStringList rows; // each as its cells joined by "|"
    QString count;

private:
    void note(const QString& call) { calls.note(QStringLiteral("frmLinkList.") + call); }
};

/// Windows without a window system.
class FakeWindows : public Windows
{
public:
    explicit FakeWindows(const CallLog& log = {}) : calls(log), selection(log), chooser(log), links(log) {}

    std::vector<LoadedWindow*> loaded() const override { return list; }
    DataWindow& newDataWindow(const QString& kind) override;
    DataWindow& registrationWindow(const QString& kind) override;
    DataWindow* loadedRegistrationWindow(const QString& kind) override;
    DataSelection& dataSelection() override { return selection; }
    CategoryChooser& categoryChooser() override { return chooser; }
    LinkListWindow& linkList() override;
    LinkListWindow* loadedLinkList() override { return linksLoaded ? &links : nullptr; }
    void showAuxiliary(const QString& windowName) override;

    CallLog calls;
    FakeDataSelection selection;
    FakeCategoryChooser chooser;
    FakeLinkList links;
    bool linksLoaded = false;
    std::vector<LoadedWindow*> list;
    std::vector<std::unique_ptr<FakeDataWindow>> dataWindows; // in the order of creation
    std::array<FakeDataWindow*, 3> shared = {nullptr, nullptr, nullptr};

private:
    FakeDataWindow& create(const QString& kind);
};

} // namespace quillon::testing
