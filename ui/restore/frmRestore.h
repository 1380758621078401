#pragma once

#include "app/base/ports/main_window_port.h"
#include "ui/widgets/form_window.h"

#include <optional>

class QLineEdit;
class QTabWidget;

namespace quillon
{

namespace kept
{
struct Damage;
}

class CopiesPage;
class LostPage;
class StatusPanels;

/// The window to take things back: the main window of a run of the program of its own.
class frmRestore : public FormWindow, public MainWindowPort
{
    Q_OBJECT

public:
    frmRestore(Session& session, WindowRegistry& registry);

    /// Shows what is kept of a database, which may be damaged or gone.
    void showDatabase(const QString& path);
    /// Lets the person choose one.
    void chooseDatabase();
    /// That the database is damaged, which has turned out since it is shown. What could not even be opened has been told.
    void tellDamage(const kept::Damage& damage);

    std::unique_ptr<Shown> clearDataList() override;
    void setStatus(int panel, const QString& text) override;
    void enableDatabaseMenus() override {}
    void rebuildCategoryTree() override {}
    int selectedNodeIndex() const override { return 0; }
    int nodeCount() const override { return 0; }
    QString nodeKey(int index) const override;
    QString nodeText(int index) const override;
    QString nodeParentKey(int index) const override;

Q_SIGNALS:
    /// The person wants to work with a database.
    void databaseWanted(const QString& path);

private:
    void arrange();
    void tellUnreadable(const QString& path, const QString& text);
    void findFileFolder(const QString& path);

    QString m_startFolder; // the current folder of the start
    QLineEdit* txtDatabase = nullptr;
    QTabWidget* tabPages = nullptr;
    bool m_isOpen = false; // the database that is shown
    LostPage* m_lost = nullptr;
    CopiesPage* m_copies = nullptr;
    StatusPanels* sbStatus = nullptr;
};

} // namespace quillon
