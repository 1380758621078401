#pragma once

#include "exchange/source_texts.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quillon
{
class Session;
}
namespace quillon::exchange
{
class Progress;
}

namespace quillon::cli
{

/// A form in which data come in.
struct ImportFormat {
    QString name;
    exchange::ImportReport (*run)(Session& session, const QString& source,
                                  const exchange::TextImportOptions& options, exchange::Progress* progress);
};

/// A form in which data go out. `item`: the identifier of the item that it is all about; empty: everything.
struct ExportFormat {
    QString name;
    exchange::ExportReport (*run)(Session& session, const QString& target, const QString& item,
                                  exchange::Progress* progress);
    bool takesItem = false; // otherwise it always writes everything
};

const std::vector<ImportFormat>& importFormats();
const std::vector<ExportFormat>& exportFormats();

/// The names of formats, for the table of verbs.
template <class Format> QStringList namesOf(const std::vector<Format>& formats)
{
    QStringList names;
    for (const Format& format : formats)
        names << format.name;
    return names;
}

} // namespace quillon::cli
