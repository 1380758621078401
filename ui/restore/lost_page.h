#pragma once

#include "core/lost_things.h"

#include <QString>
#include <QWidget>

#include <cstddef>
#include <memory>
#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace quillon
{

class ComparisonView;
class ReportList;
class Session;

/// The page that lists what was lost in the open database, and puts it back. The list is read in slices, between which
/// the window is alive.
class LostPage : public QWidget
{
    Q_OBJECT

public:
    LostPage(Session& session, QWidget* parent);
    LostPage(const LostPage&) = delete;
    LostPage& operator=(const LostPage&) = delete;
    ~LostPage() override;

    /// Lists what was lost in a database, up to now. `unreadable`: why it is not the open one, for the person, who then
    /// can look at everything and put nothing back. Whether anything was lost.
    bool read(const QString& database, const QString& unreadable = {});
    void showNothing();

private:
    void arrange();
    QWidget* makeList();
    void connectControls();
    void ask();
    void readOn();
    void appendRows();
    void tellCount(bool goesOn);
    void showSelected();
    /// The selected one in the order of the list; nothing when none is.
    std::optional<std::size_t> selected() const;
    void cmdPutBack_Click();
    bool isConfirmed(const LostEntry& entry, const LostDetails& details);

    Session& m_session;
    QString m_database;
    QString m_unreadable; // why nothing can be put back
    bool m_isAnything = false;
    std::unique_ptr<LostThings> m_things;
    std::size_t m_listed = 0;
    std::optional<LostEntry> m_awaited; // is selected when it is listed
    QTimer* m_reading = nullptr;

    QLineEdit* txtFilter = nullptr;
    QComboBox* cboKind = nullptr;
    ReportList* lsvLost = nullptr;
    QLabel* lblLostCount = nullptr;
    ComparisonView* m_comparison = nullptr;
    QPushButton* cmdPutBack = nullptr;
};

} // namespace quillon
