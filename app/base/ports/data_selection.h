#pragma once

#include "app/base/ports/windows.h"

#include <QString>
#include <QStringView>

#include <memory>

namespace quillon
{

/// The rows of a list while they are appended; the list shows them all at once when this is finished, or when a failure
/// has ended it.
class DataRowFill
{
public:
    virtual ~DataRowFill() = default;
    virtual void append(QStringView name, QStringView kind, QStringView identifier) = 0;
    virtual void finish() = 0;
};

/// What the core operations ask of the window in which the person chooses one of many data.
class DataSelection : public virtual LoadedWindow
{
public:
    virtual void clearRows() = 0;
    /// `searched`: the text that a full-text search found them by; empty when none did.
    virtual std::unique_ptr<DataRowFill> fillRows(const QString& searched) = 0;
    virtual QString caption() const = 0;
    virtual void setCaption(const QString& caption) = 0;
    /// Sets the text of a status bar panel; panels count from 1.
    virtual void setStatus(int panel, const QString& text) = 0;
};

} // namespace quillon
