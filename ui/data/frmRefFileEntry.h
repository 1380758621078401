#pragma once

#include "app/base/ports/data_window.h"
#include "ui/data/category_rows.h"
#include "ui/widgets/form_window.h"

#include <array>

class QLineEdit;
class QPushButton;
class QProgressBar;

namespace quillon
{

class CancellableWork;
enum class FileRegistration;
class ReportList;

/// The window in which an outside file is registered as a file datum. It has no display mode; after a registration it
/// closes.
class frmRefFileEntry : public FormWindow, public DataWindow
{
    Q_OBJECT

public:
    frmRefFileEntry(Session& session, WindowRegistry& registry);

    /// Fields 0 (the path of the outside file) and 1 (the identifier); others are empty and cannot be set.
    QString fieldText(int index) const override;
    void setFieldText(int index, const QString& text) override;
    void setCaption(const QString& caption) override { setWindowTitle(caption); }
    void setMode(FormMode) override {} // it only registers
    void setLinkRows(const std::vector<LinkRow>&) override {}
    void setCategoryRows(const std::vector<CategoryRow>& rows) override;
    std::vector<CategoryRow> categoryRows() const override;
    void setRow(const DatumRow&) override {}
    DatumRow row() const override { return {}; }
    bool holdsUnsavedInput() const override;

protected:
    bool queryUnload() override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void buildMenus();
    void arrange();
    void cmdPath_Click();
    void mnuDataEntry_Click();
    void cmdCancel_Click();
    /// Registers the file; the steps of `mnuDataEntry_Click` without its answer to failures.
    void registerFile();
    /// Lets the file be copied and its row be written, and shows how far that is.
    FileRegistration copyAndWrite();

    std::array<QLineEdit*, 2> m_txtFields = {nullptr, nullptr};
    QPushButton* cmdPath = nullptr;
    QPushButton* cmdEntry = nullptr;
    QPushButton* cmdCancel = nullptr;
    ReportList* lsvCategory = nullptr;
    QProgressBar* m_progress = nullptr; // of a long copy
    QString m_chosenPath;               // what the file dialog chose last
    bool CloseWithoutAsking = false;
    CategoryRows m_categories;
    CancellableWork* m_copying = nullptr; // while a copy goes on
};

} // namespace quillon
