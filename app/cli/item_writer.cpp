#include "app/cli/item_writer.h"

#include "app/cli/columns.h"
#include "app/cli/found.h"
#include "app/cli/run.h"
#include "store/data_kinds.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon::cli
{

namespace
{

constexpr int IdentifierColumns = 14;
constexpr int KindColumns = 6;

void writeTextOrNull(Output& output, std::optional<QStringView> text)
{
    if (text)
        output.writeJson(*text);
    else
        output.write("null");
}

} // namespace

ItemWriter::ItemWriter(Run& run) : m_run(run), m_identifierEnd(run.identifierEnd())
{
    if (wantsTexts())
        m_relations.emplace(run.session);
}

bool ItemWriter::wantsTexts() const
{
    return m_run.isJson() && !m_identifierEnd;
}

void ItemWriter::write(const Item& item)
{
    ++m_count;
    if (m_identifierEnd) {
        m_run.output.write(item.identifier);
        m_run.output.write(*m_identifierEnd);
    } else if (m_relations) {
        writeObject(item);
    } else {
        writeForPeople(item);
    }
}

void ItemWriter::writeForPeople(const Item& item)
{
    Output& output = m_run.output;
    const QString identifier = padded(onePrintedLine(item.identifier), IdentifierColumns);
    QString name = onePrintedLine(item.name.value_or(QStringView()));
    if (output.columns() > 0)
        name = elided(name, output.columns() - IdentifierColumns - KindColumns);
    if (output.hasColours())
        output.write("\033[36m");
    output.write(identifier);
    if (output.hasColours())
        output.write("\033[m");
    output.write(padded(shortKindName(item.identifier), KindColumns));
    output.write(name);
    output.write('\n');
}

void ItemWriter::writeObject(const Item& item)
{
    Output& output = m_run.output;
    writeItemFields(output, item);
    output.write(",\"categories\":[");
    output.write(m_relations->categoriesOf(item.identifier));
    output.write("],\"links\":[");
    output.write(m_relations->linksOf(item.identifier));
    output.write("]}\n");
}

bool ItemWriter::pause()
{
    if (m_run.output.isFull())
        m_run.output.flush();
    m_run.goOn();
    return m_run.output.goesOn();
}

Status ItemWriter::finish()
{
    m_run.output.flush();
    if (m_count > 0)
        return Status::Done;
    complain(u"該当するデータはありません。"_s);
    return Status::NothingFound;
}

void writeItemFields(Output& output, const Item& item)
{
    output.write("{\"identifier\":");
    output.writeJson(item.identifier);
    output.write(",\"kind\":");
    output.writeJson(wordOf(item.kind));
    output.write(",\"name\":");
    writeTextOrNull(output, item.name);
    output.write(",\"text\":");
    writeTextOrNull(output, item.text);
}

} // namespace quillon::cli
