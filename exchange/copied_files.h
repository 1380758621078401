#pragma once

#include "exchange/all_data.h"
#include "exchange/report.h"

#include <QHash>
#include <QString>

#include <optional>

namespace quillon::exchange
{

class Progress;
class StagedOutput;

/// Copies the files of file data into a folder "RefFile" of an export, each once.
class CopiedFiles
{
public:
    /// All of them outlive this.
    CopiedFiles(Session& session, const StagedOutput& output, ExportReport& report)
        : m_session(session), m_output(output), m_report(report)
    {
    }

    /// The name of the file of a datum there; nothing when it has none, which is told. `text`: that of the datum.
    std::optional<QString> copy(const AllData::Datum& datum, const QString& text, Progress* progress);

private:
    Session& m_session;
    const StagedOutput& m_output;
    ExportReport& m_report;
    QHash<QString, QString> m_copied; // names there by their keys
};

} // namespace quillon::exchange
