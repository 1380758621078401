#pragma once

#include <QString>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QPlainTextEdit;

namespace quillon
{

class ReportList;
struct LostDetails;
struct Reporting;

/// What was lost field by field, how it was and how it is now. What differs is told in words and underlined.
class ComparisonView : public QWidget
{
    Q_OBJECT

public:
    ComparisonView(Reporting& reporting, QWidget* parent);

    void show(const LostDetails& details);
    void clear();

protected:
    void changeEvent(QEvent* event) override;

private:
    struct Row {
        QString label;
        QString before;
        std::optional<QString> now;
    };

    void arrange();
    void addRelations(const QString& label, const QStringList& before, const QStringList& now);
    void showField();
    void markDifferences();

    Reporting& m_reporting;
    std::vector<Row> m_rows;
    bool m_isCompared = true;
    ReportList* lsvFields = nullptr;
    QLabel* lblDifference = nullptr;
    QPlainTextEdit* txtBefore = nullptr;
    QPlainTextEdit* txtNow = nullptr;
};

} // namespace quillon
