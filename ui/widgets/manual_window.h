#pragma once

#include <QString>

class QWidget;

namespace quillon
{

/// The window that shows the manual, as those see it that ask for help.
class ManualWindow
{
public:
    virtual ~ManualWindow() = default;

    /// Opens the manual at a chapter, or tells that there is none. `asking`: the window that the person is in, which may
    /// be one that all others wait for.
    virtual void showChapter(const QString& chapter, QWidget& asking) = 0;
};

} // namespace quillon
