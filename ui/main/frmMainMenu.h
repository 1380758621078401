#pragma once

#include "app/base/ports/data_window.h"
#include "app/base/ports/main_window_port.h"
#include "core/listed_datum.h"
#include "ui/main/data_list.h"
#include "ui/main/fill_progress.h"
#include "ui/widgets/form_window.h"

#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QAction;
class QFrame;
class QMenu;
class QProgressBar;

namespace quillon::exchange
{
struct ConvertedFile;
}

namespace quillon
{

struct Error;
struct InputBox;
class KeyedTree;
class PaneHint;
class PaneSplitter;
class RecordSet;
class ReportList;
class StatusPanels;

/// The main window: the category tree on the left, the data list on the right, a splitter between them, the status
/// bar and the menus. The members of one subject stand in one file: frmMainMenu_layout, _menus,
/// _tree, _list, _filing, _categories, _data, _keys, _console, _old_files.
class frmMainMenu : public FormWindow, public MainWindowPort
{
    Q_OBJECT

public:
    frmMainMenu(Session& session, WindowRegistry& registry);
    ~frmMainMenu() override;
    frmMainMenu(const frmMainMenu&) = delete;
    frmMainMenu& operator=(const frmMainMenu&) = delete;

    // What operations below the windows ask for.
    std::unique_ptr<Shown> clearDataList() override;
    void setStatus(int panel, const QString& text) override;
    void enableDatabaseMenus() override;
    void rebuildCategoryTree() override;
    int selectedNodeIndex() const override;
    int nodeCount() const override;
    QString nodeKey(int index) const override;
    QString nodeText(int index) const override;
    QString nodeParentKey(int index) const override;

    /// Opens a database as if its name had been chosen in the File menu's dialog.
    void openChosenFile(const QString& path);

    /// Moves the splitter. `x`: the wanted position in twips, clamped in place.
    void SizeControls(float& x);
    /// The first free identifier for a new category. Only the tree is asked.
    QString GetNewCategory_ID(const QString& parentKey, bool topLevel) const;
    /// Whether more than one row of the data list is selected.
    bool CheckMultiSelect() const;
    /// Deletes the datum of the selected row and tells so, without asking; the list is left as it is.
    void DeleteSelectedData();

    /// Runs a command of the console, given in upper case; an unknown one is refused.
    void ExecSystemCommand(const QString& command);
    /// Opens the console at its key chord.
    void Form_KeyDown(int key, Qt::KeyboardModifiers shift);

    // Handlers of the frame. Positions are in twips, relative to the handle.
    void Form_Resize();
    void imgSplitter_MouseDown();
    void imgSplitter_MouseMove(double x);
    void imgSplitter_MouseUp();

    // Handlers of the menus.
    void mnuFileNew_Click();
    void mnuFileOpen_Click();
    void mnuEnd_Click();
    void mnuEntryMain_Click();
    void mnuEntryRefDoc_Click();
    void mnuEntryRefFile_Click();
    void mnuDataView_Click();
    void mnuDataCategoryDelete_Click();
    void mnuDataCloseAll_Click();
    void mnuDataDelete_Click();
    void mnuCategoryEntry_Click();
    void mnuCategoryDelete_Click();
    void mnuCategoryRename_Click();
    void mnuFindName_Click();
    void mnuInfoLink_Click();
    void mnuInfoEntry_Click();
    void mnuInfoReadme_Click();
    void mnuInfoRef_Click();
    void mnuInfoSystem_Click();

    // Handlers of the tree and the list.
    void tvwCategory_NodeClick(int node);
    void tvwCategory_KeyUp(int key);
    void tvwCategory_MouseDown(const QPoint& position);
    void tvwCategory_MouseMove();
    void tvwCategory_OLEDragDrop(const QString& text);
    /// Files the rows that were copied or cut in the selected category.
    void tvwCategory_Paste();
    void lsvData_KeyDown(int key, Qt::KeyboardModifiers shift);
    void lsvData_MouseDown(const QPoint& position);
    void lsvData_MouseMove();
    void lsvData_DblClick();

Q_SIGNALS:
    /// The person confirmed the end of the program.
    void endProgram();

protected:
    bool queryUnload() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    /// The column of the data list that holds the identifier.
    static constexpr int IdentifierColumn = 2;

    void buildControls();
    void buildMenus();
    /// Places the handle at a position in twips.
    void placeSplitter(double left, int top, int height);
    void splitterEvent(QEvent& event);
    /// The keys of the frame: F6 goes to the other pane, F8 to the splitter and back; Ctrl with Left or Right moves it.
    void connectKeys();
    void goToOtherPane();
    void goToSplitter();
    void leaveSplitter();
    void moveSplitterBy(double twips);
    void connectTree();
    void connectList();

    /// Lists what the node at a position of the tree stands for, and counts it; nothing for position 0.
    void ShowDataList(int node);
    void showDataCount();
    /// The position of the node whose data are listed, 0 when it is not in the tree any more.
    int listedNodeIndex() const;
    /// The position of the selected node. Error 91 when none is selected.
    int requiredNodeIndex() const;
    bool treeHasNodes() const { return nodeCount() > 0; }
    /// The answer of the data menu's own handlers to a failure.
    void showFailure(const Error& error, const QString& handler);
    /// Asks whether data are to be filed in the category at a position of the tree, and does it; told when none stands
    /// there. `dataToFile`: asked for them when one does; none for nothing to be done. Whether the answer was yes.
    bool fileIn(int node, const std::function<std::vector<ListedDatum>()>& dataToFile);
    /// Files data in a category. Those that are gone, or others by now, are not filed; rows that still show them leave
    /// the list.
    void classify(const std::vector<ListedDatum>& listed, const CategoryRow& category);
    /// What these rows of the data list show.
    std::vector<ListedDatum> dataIn(const std::vector<int>& rows) const;
    /// One datum under the name that it has now; none when that cannot be read.
    std::vector<ListedDatum> datumToAskAbout(const QString& identifier);
    /// Asks for a name until `store` has taken it or none is typed, which is answered with `nameMissing`. A failure of
    /// `store` is told and the box comes back with what was typed; not trapped: error 3021.
    std::optional<QString> storeTypedName(InputBox box, const QString& nameMissing,
                                          const std::function<void(const QString&)>& store,
                                          const std::function<void(const Error&)>& tell);
    void openTextFile(const QString& fileName, const QString& missing);
    /// Asks whether a file of the older engine is to be converted, and does it. Nothing when it is not, or when that
    /// has failed, which is told.
    std::optional<exchange::ConvertedFile> convertedCopy(const QString& path);
    void tellWhatIsLost(const exchange::ConvertedFile& converted);

    KeyedTree* tvwCategory = nullptr;
    ReportList* lsvData = nullptr;
    PaneSplitter* imgSplitter = nullptr;
    QWidget* m_splitterGap = nullptr;
    QFrame* picSplitter = nullptr;
    QProgressBar* pgbMain = nullptr;
    StatusPanels* sbStatus = nullptr;
    std::unique_ptr<PaneHint> m_treeHint; // until the first database is open
    std::unique_ptr<PaneHint> m_listHint;
    bool Moving = false;
    bool m_takesDrag = false;  // of a file
    CategoryRow m_listed;      // the node whose data are listed; one that is no category has no number
    double m_splitterLeft = 0; // where the handle stands, in twips
    QPointer<QWidget> m_beforeSplitter; // what had the keyboard before it

    /// What the file dialog of the File menu remembers between its showings.
    struct {
        QString fileName;
        QString folder;
    } dlgDbOpen;

    QMenu* mnuData = nullptr;
    QMenu* mnuCategory = nullptr;
    QMenu* mnuFind = nullptr;
    QMenu* mnuInfo = nullptr;
    QAction* mnuInfoLink = nullptr;
    QAction* mnuInfoEntry = nullptr;

    QSize m_laidOutFrame;
    std::unique_ptr<FillProgress> m_progress;
    std::unique_ptr<DataListFiller> m_filler;
};

} // namespace quillon
