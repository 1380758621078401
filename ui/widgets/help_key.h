#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace quillon
{

struct Reporting;
class WindowRegistry;

/// The chapter of the manual for a window of the program, by its design name, or for a box, by its title; empty when it
/// has none of its own.
QString manualChapterFor(const QString& windowNameOrTitle);

/// F1 in any window opens the manual at the chapter for it, also in one that all others wait for. In a box it is the
/// chapter of the window that shows the box, unless the box has its own.
class HelpKey : public QObject
{
public:
    HelpKey(Reporting& reporting, WindowRegistry& registry);

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    void showHelp(QWidget& window);

    Reporting& m_reporting;
    WindowRegistry& m_registry;
};

} // namespace quillon
