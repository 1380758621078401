#pragma once

#include <QObject>
#include <QSessionManager>

#include <functional>

namespace quillon
{

class Windows;

/// How the program meets the end of the session: log-off, shutdown, a restart of the system. The system tells the person
/// which programs keep it from ending; a box of the program's own would only keep it waiting.
/// - While a window holds what a person has typed and not saved, the end is refused, and nothing closes.
/// - When the application is told to quit, the program ends at once: no window is closed, so none asks anything.
class SessionEnd : public QObject
{
    Q_OBJECT

public:
    using Refuse = std::function<void(QSessionManager&)>;
    /// `end` is what ends the program, `refuse` what keeps the session from ending.
    SessionEnd(const Windows& windows, std::function<void()> end, Refuse refuse = &QSessionManager::cancel);

    /// Whether nothing would be lost if the session ended now.
    bool mayCome() const;

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    const Windows& m_windows;
    std::function<void()> m_end;
    Refuse m_refuse;
};

} // namespace quillon
