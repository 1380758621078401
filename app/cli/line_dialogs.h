#pragma once

#include "app/base/ports/dialogs.h"
#include "app/base/ports/event_log.h"
#include "app/base/ports/windows.h"
#include "app/cli/status.h"

namespace quillon::cli
{

/// What windows show as boxes, as lines on the error stream. A question is answered by `--yes` or at a terminal.
class LineDialogs : public Dialogs
{
public:
    explicit LineDialogs(bool saysYes) : m_saysYes(saysYes) {}

    Answer messageBox(const MessageBox& box) override;
    std::optional<QString> inputBox(const InputBox& box) override;
    std::optional<QString> fileDialog(const FileDialog& dialog) override;

    /// Why the last question was not answered with yes: `Refused` when there was nobody to ask.
    Status statusOfNo() const { return m_statusOfNo; }

private:
    bool m_saysYes;
    Status m_statusOfNo = Status::NothingFound;
};

/// Remembers the last failure that was told, and passes on what is to be logged.
class LineLog : public EventLog
{
public:
    void write(const QString& line) override;
    void failureTold(qint32 errorNumber) override { m_lastFailure = errorNumber; }

    /// The status for what was told since this was asked last; `otherwise` when no failure was.
    Status takeStatus(Status otherwise);

private:
    qint32 m_lastFailure = 0;
};

/// The windows of a program that has none. Nothing that is asked for a window here is ever shown: error 91.
class NoWindows : public Windows
{
public:
    std::vector<LoadedWindow*> loaded() const override { return {}; }
    DataWindow& newDataWindow(const QString& kind) override;
    DataWindow& registrationWindow(const QString& kind) override;
    DataWindow* loadedRegistrationWindow(const QString&) override { return nullptr; }
    DataSelection& dataSelection() override;
    CategoryChooser& categoryChooser() override;
    LinkListWindow& linkList() override;
    LinkListWindow* loadedLinkList() override { return nullptr; }
    void showAuxiliary(const QString& windowName) override;
};

} // namespace quillon::cli
