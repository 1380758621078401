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
    qint64 number = 0; // of the category's row, 0 when it is not known: identifiers are given out again
};

/// The row of a database to which a data window belongs; number 0 for none. Unlike an identifier, a number is not
/// given out again.
struct DatumRow {
    QString databaseFile;
    qint64 number = 0;
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
    /// A window that registers belongs to no row.
    virtual void setMode(FormMode mode) = 0;
    /// Lets the window belong to a row, whose texts its fields hold at this moment.
    virtual void setRow(const DatumRow& row) = 0;
    virtual DatumRow row() const = 0;
    /// Replaces the rows of the link list.
    virtual void setLinkRows(const std::vector<LinkRow>& rows) = 0;
    /// Replaces the rows of the category list.
    virtual void setCategoryRows(const std::vector<CategoryRow>& rows) = 0;
    virtual std::vector<CategoryRow> categoryRows() const = 0;
    /// Shows where a text that was searched first stands in the content; nothing where it does not, or where the window
    /// shows no content.
    virtual void showPlaceOf(const QString& /*text*/) {}
};

} // namespace quillon
