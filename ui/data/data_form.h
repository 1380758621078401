#pragma once

#include "app/base/ports/data_window.h"
#include "core/data_entry.h"
#include "ui/data/category_rows.h"
#include "ui/data/text_fields.h"
#include "ui/widgets/form_window.h"
#include "ui/widgets/report_model.h"

#include <QPointer>

#include <array>
#include <functional>
#include <memory>

class QHBoxLayout;
class QKeyEvent;

namespace quillon
{

struct DataKind;
class FindBar;
class RecordSet;
class ReportList;
class StatusPanels;

/// What the windows of definitions and of documents have in common: the fields, lists and status bar of one datum,
/// its checks, its writing and the question before closing. A window adds its menus and says where it differs.
class DataForm : public FormWindow, public DataWindow
{
    Q_OBJECT

public:
    ~DataForm() override;
    DataForm(const DataForm&) = delete;
    DataForm& operator=(const DataForm&) = delete;

    QString fieldText(int index) const override;
    void setFieldText(int index, const QString& text) override;
    void setCaption(const QString& caption) override;
    void setMode(FormMode mode) override;
    void setLinkRows(const std::vector<LinkRow>& rows) override;
    void setCategoryRows(const std::vector<CategoryRow>& rows) override;
    std::vector<CategoryRow> categoryRows() const override;
    void setRow(const DatumRow& row) override;
    DatumRow row() const override { return m_row; }
    void showPlaceOf(const QString& text) override;
    bool holdsUnsavedInput() const override;

    /// Panel 1 of the status bar, the only record of the window's mode.
    QString modeText() const;
    /// Writes how many full-width characters still fit into a field to panel 2; fields 0 and 2 only.
    void ShowInputCount(qint16 index);

protected:
    /// In what the windows differ, apart from their menus.
    struct Design {
        const DataKind& kind;
        QString title;
        QString identifierLabel;
        QString contentLabel;
        std::array<QString, 3> fieldToolTips;
        std::vector<ReportModel::Column> linkColumns; // name, kind, identifier
        QString linkToolTip;
        std::vector<ReportModel::Column> categoryColumns; // name, identifier, and one that nothing fills
        QString categoryToolTip;
        QString modeText; // before the opener sets one
        QString modeToolTip;
        QString countToolTip;
        QString updateTitle;           // of the notice after an update
        bool acceptsDrops = false;     // data can be dropped on the link list to link them
        bool updateClassifies = false; // an update files the datum in the listed categories again
    };

    DataForm(Session& session, WindowRegistry& registry, const Design& design);

    /// Whether a key in a field is followed by a warning about the text's length.
    virtual bool warnsOnKey(const QKeyEvent& event) const = 0;
    /// Adds the datum to its table and turns the window into one that shows it. False when the input was refused.
    virtual bool RegisterData() = 0;
    /// Writes what the window shows into the row of its datum. False when the input was refused.
    bool UpdateData();

    /// Whether name and content are filled and short enough; tells the user when they are not.
    bool CheckInput();
    /// Registers what the window shows, in every category of the category list, and belongs to the new row from then
    /// on. Nothing when the input was refused.
    std::optional<SavedDatum> registerShownDatum();
    /// The question before closing; true lets the window close.
    bool QuerySave();
    bool showsDatum() const; // display mode
    void SwitchDataWindow(const QString& identifier);

    void mnuDataDelete_Click();
    void mnuDataEntry_Click();
    void mnuDataUpdate_Click();
    void mnuDataChange_Click();
    void mnuDataCloseAll_Click();
    void mnuDataClose_Click();

    /// The menus "リンク" and "分類", the same in both windows but for what their captions say.
    struct RelationEntries {
        QString categoryEntryCaption;
        bool linkCategoryEntry = false; // an entry that does nothing
    };
    void addRelationMenus(const RelationEntries& entries);

    /// Writes into a field on behalf of the person, who can take that back.
    void replaceFieldText(int index, const QString& text) { field(index).replace(text); }
    QWidget& fieldWidget(int index) const { return field(index).widget(); }
    /// The row of the content's label; a window may add controls to it.
    QHBoxLayout& contentLabelRow() const { return *m_contentLabelRow; }

    bool queryUnload() override { return QuerySave(); }
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

    ReportList* lsvLink = nullptr;
    ReportList* lsvCategory = nullptr;
    StatusPanels* sbStatus = nullptr;
    bool m_saveResult = false; // registered or updated, or the last answer of QuerySave; keeps a notice away
    bool m_deleted = false;    // the datum is gone, closing asks nothing

private:
    TextField& field(int index) const;
    DatumTexts shownTexts() const { return {.name = fieldText(0), .content = fieldText(2)}; }
    /// The datum to which the window belongs.
    DatumPlace place() const;
    std::optional<SavedDatum> updateShownDatum();
    /// The window shows what a save has written; categories that are gone leave its list.
    void hasSaved(const SavedDatum& saved, const DatumTexts& written);
    /// Whether closing the window would lose nothing.
    bool isUnchanged();
    void buildFields();
    void buildLists();
    void arrange();
    /// Notes this window as the one whose datum gets the link that is chosen next.
    void SetLinkSource();
    /// Lets the user choose a datum of a table and links it.
    void linkToChosen(std::shared_ptr<RecordSet> table);
    void mnuLinkRefFile_Click();
    void mnuLinkView_Click();
    void mnuLinkDelete_Click();
    void mnuCategoryEntry_Click();
    void mnuCategoryDelete_Click();
    void lsvLink_OLEDragDrop(const QString& text);
    void connectLists();
    /// Ctrl+F opens the bar for searching in the content, F3 and Shift+F3 go on and back.
    void connectFindBar();
    /// A menu of the window as the context menu of a list; only in display mode.
    void popUp(const QString& menuName, const QPoint& position);
    /// True when the key has been dealt with and must not reach the field.
    bool txtFields_KeyDown(int index, QKeyEvent& event);
    bool fieldEvent(int index, QEvent& event);
    /// The window sees the release of a key before its controls do; some of them would keep it. True for F2.
    bool Form_KeyUp(const QKeyEvent& event);

    const Design m_design;
    DatumRow m_row;    // of the datum shown; none while one is registered
    DatumTexts m_seen; // what that row held when it was last shown or written
    CategoryRows m_categories;
    std::array<TextField*, 3> m_txtFields = {nullptr, nullptr, nullptr};
    QHBoxLayout* m_contentLabelRow = nullptr;
    FindBar* m_findBar = nullptr;
};

} // namespace quillon
