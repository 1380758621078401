#pragma once

#include "store/old_format/definition.h"
#include "store/old_format/fields.h"
#include "store/old_format/long_texts.h"
#include "store/old_format/losses.h"
#include "store/old_format/page_rows.h"
#include "store/old_format/pages.h"

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace quillon::old_format
{

/// A database of the older desktop engine, formats 3 and 4: its tables and their texts, exactly as they are there. What
/// cannot be read is noted as a loss, and the rest is read. Nothing of the file is ever written.
class OldDatabase
{
public:
    /// `content`: the whole file. Error 3343, with a description that says why, when nothing of it can be read.
    explicit OldDatabase(QByteArray content);

    Pages::Format format() const { return m_pages.format(); }
    int codePage() const { return m_pages.codePage(); }

    /// The tables of a user, by name, in the order of the catalogue.
    QStringList tableNames() const;
    /// Whether something of the catalogue is lost, so that a table may lack for that reason.
    bool isCatalogueDamaged() const { return m_isCatalogueDamaged; }

    /// A table as its definition describes it. Nothing when there is none of this name, or when its definition cannot
    /// be read, which is a loss then.
    std::optional<Definition> table(const QString& name);

    /// The texts of a row in the order of the definition's columns; null where there is nothing, and also where a field
    /// cannot be read.
    using Row = std::vector<std::optional<QString>>;
    /// Gives the rows of a table in the order in which they lie in the file. Only columns of texts can be read.
    /// A table may be read again; what is lost of it has been noted then.
    /// `isDamaged`: some field of it is a loss.
    using RowReader = std::function<void(const Row& row, bool isDamaged)>;
    void forEachRow(const QString& name, const Definition& definition, const RowReader& read);

    const Losses& losses() const { return m_losses; }

private:
    struct Entry {
        QString name;
        quint32 page = 0;
    };
    using FieldsReader = std::function<void(const Fields& fields)>;

    void readCatalogue();
    void noteEntry(const Fields& fields, const std::vector<const Column*>& columns);
    void forEachStoredRow(const QString& name, const Definition& definition, const FieldsReader& read);
    std::optional<PageRow> pointedRow(const PageRow& pointer, quint32 owner, QSet<quint32>& taken) const;
    std::optional<QString> text(const QString& table, const Column& column, const Fields::Field& field,
                                LongTexts& longTexts);
    void lose(const QString& table, const QString& column, const QString& text);
    /// `text`: a sentence with places for the page and the numbers of the rows.
    void loseRows(const QString& table, quint32 page, const std::vector<int>& rows, const QString& text);

    Losses m_losses;
    Pages m_pages;
    std::vector<Entry> m_entries;
    QSet<QString> m_tablesRead;
    bool m_isReadAgain = false; // what is lost now is known
    bool m_hasLost = false;     // since somebody looked
    bool m_isCatalogueDamaged = false;
};

} // namespace quillon::old_format
