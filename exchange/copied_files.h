#pragma once

#include "exchange/all_data.h"
#include "exchange/report.h"

#include <QSet>
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
    QSet<QString> m_copied;
};

} // namespace quillon::exchange
