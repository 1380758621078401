#pragma once

#include "app/base/ports/windows.h"

#include <QString>

#include <vector>

namespace quillon
{

/// One row of a data window's link list: kind word, name and identifier of the partner.
struct LinkRow {
    QString kind;
    QString name;
    QString identifier;
};

/// One row of a data window's category list.
struct CategoryRow {
    QString name;
    QString identifier;
};

/// What a window for data is there for at the moment.
enum class FormMode { Registration, Display };

/// What the core operations ask of a window that shows or registers one datum.
class DataWindow : public virtual LoadedWindow
{
public:
    DataWindow* asDataWindow() override { return this; }

    /// Field boxes: 0 name, 1 identifier, 2 definition or content.
    virtual QString fieldText(int index) const = 0;
    virtual void setFieldText(int index, const QString& text) = 0;
    virtual void setCaption(const QString& caption) = 0;
    /// Switches the window's menus and the mode text of its status bar. A window without modes stays as it is.
    virtual void setMode(FormMode mode) = 0;
    /// Replaces the rows of the link list.
    virtual void setLinkRows(const std::vector<LinkRow>& rows) = 0;
    /// Replaces the rows of the category list.
    virtual void setCategoryRows(const std::vector<CategoryRow>& rows) = 0;
    virtual std::vector<CategoryRow> categoryRows() const = 0;
};

} // namespace quillon
