#pragma once

#include "app/base/ports/windows.h"

#include <QString>
#include <QStringView>

#include <memory>

namespace quillon
{

/// One end of a link as the link list window shows it.
struct LinkEnd {
    QStringView name;
    QStringView kind;
    QStringView identifier;
};

/// The rows of the link list window while they are appended; the list shows them all at once when this is finished, or
/// when a failure has ended it.
class LinkRowFill
{
public:
    virtual ~LinkRowFill() = default;
    virtual void append(const LinkEnd& source, const LinkEnd& target) = 0;
    virtual void finish() = 0;
};

/// What the core operations ask of the window that lists every link.
class LinkListWindow : public virtual LoadedWindow
{
public:
    /// Empties the list and puts the count back to its designed text.
    virtual void reset() = 0;
    virtual std::unique_ptr<LinkRowFill> fillRows() = 0;
    virtual void setCount(const QString& text) = 0;
};

} // namespace quillon
