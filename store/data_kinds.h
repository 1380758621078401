#pragma once

#include "store/session.h"

#include <QChar>
#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <memory>

namespace quillon
{

/// How long the texts of a datum may be, in full-width characters (two bytes of code page 932 each).
struct TextLimits {
    double name = 0;    // on saving; exactly the limit is already too long, for the content as well
    double content = 0; // on saving
    double typing = 0;  // warned about while typing, whatever the field
    double room = 0;    // from which the room left for the content is counted down
};

/// What the program knows of a kind of data; the first character of an identifier tells the kind.
struct DataKind {
    QChar letter;
    std::shared_ptr<RecordSet> Session::*recordSet;
    QString shortName;    // in lists and in a few titles
    QString title;        // of its department, on message boxes
    QString windowName;   // of the window that registers a datum and, if any does, shows it
    bool isShownInWindow; // otherwise the file of the datum is opened
    QString captionJoint; // in the caption of its window, between the short name and the name of the datum
    TextLimits limits;    // of what a person writes
};

namespace data_kinds
{
const DataKind& definition();
const DataKind& document();
const DataKind& file();

inline constexpr std::size_t Count = 3;
/// Definitions, documents, files.
const std::array<DataKind, Count>& all();
/// The position of a kind in `all()`.
std::size_t positionOf(const DataKind& kind);
} // namespace data_kinds

/// The kind of an identifier, null for an unknown one. Letters are compared exactly: "m" is unknown.
const DataKind* kindOf(QStringView identifier);

/// The kind whose letter `text` is, null when it is anything else.
const DataKind* kindWithLetter(QStringView text);

/// The kind among whose data a name is looked up: an identifier of an unknown kind is sought among the definitions.
const DataKind& kindForNames(QStringView identifier);

/// The short name of an identifier's kind, "不明" for an unknown one. It lives as long as the program.
const QString& shortKindName(QStringView identifier);

enum class DivName { ShortName, Title };

/// The kind of an identifier as a word ("定義", "文献", "FILE") or as the title of its department; "不明" for an
/// unknown kind. Only the first character of `identifier` counts.
QString GetDivName(Session& session, const QString& identifier, DivName form);

/// The table of an identifier's kind. Error 91 for an unknown kind and while no database is open.
RecordSet& dataTableOf(Session& session, QStringView identifier);

} // namespace quillon
