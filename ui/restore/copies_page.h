#pragma once

#include "store/kept/copies.h"

#include <QString>
#include <QWidget>

#include <vector>

class QLabel;
class QPushButton;

namespace quillon
{

class ReportList;
class Session;

/// The page that lists the kept copies of a database, which may be damaged or gone itself, and takes one out.
class CopiesPage : public QWidget
{
    Q_OBJECT

public:
    CopiesPage(Session& session, QWidget* parent);
    CopiesPage(const CopiesPage&) = delete;
    CopiesPage& operator=(const CopiesPage&) = delete;
    ~CopiesPage() override;

    void showDatabase(const QString& path);
    std::size_t count() const { return m_copies.size(); }

Q_SIGNALS:
    /// The person wants to go on working with a copy that was taken out.
    void databaseWanted(const QString& path);

private:
    void arrange();
    void cmdTakeOut_Click();
    void takeOut(const kept::Copy& copy, const QString& target);
    QString proposedName(const kept::Copy& copy) const;

    Session& m_session;
    QString m_database;
    std::vector<kept::Copy> m_copies;
    ReportList* lsvCopy = nullptr;
    QLabel* lblCopyCount = nullptr;
    QPushButton* cmdTakeOut = nullptr;
};

} // namespace quillon
