#include "bench/corpus/corpus.h"

#include "bench/corpus/category_plan.h"
#include "bench/corpus/item_plan.h"
#include "bench/corpus/text_maker.h"
#include "store/schema.h"

#include <algorithm>
#include <unordered_set>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::corpus
{

namespace
{

constexpr qint64 Megabyte = 1'000'000;
constexpr qint64 MostBytesPerDocument = 60'000; // on average; a single one may be longer
constexpr int MostMembershipsPerDatum = 6;

/// The independent sequences of random numbers.
enum Stream : quint64 {
    DefinitionDays = 1,
    DocumentDays,
    FileDays,
    DefinitionTexts,
    DocumentSizes,
    DocumentTexts,
    FileTexts,
    CategoryShape,
    CategoryNames,
    LinkPairs,
    Filing
};

/// All data of a corpus under one numbering: definitions, documents, files.
class Items
{
public:
    explicit Items(const Options& options)
        : definitions(u'M', options.definitions, Random(options.seed, DefinitionDays)),
          documents(u'R', options.documents, Random(options.seed, DocumentDays)),
          files(u'F', options.files, Random(options.seed, FileDays))
    {
    }

    int size() const { return definitions.size() + documents.size() + files.size(); }
    QString identifier(int item) const
    {
        if (item < definitions.size())
            return definitions.identifier(item);
        item -= definitions.size();
        return item < documents.size() ? documents.identifier(item)
                                       : files.identifier(item - documents.size());
    }

    ItemPlan definitions;
    ItemPlan documents;
    ItemPlan files;
};

void makeDefinitions(const Options& options, const Items& items, const TextMaker& texts, RowSink& rows)
{
    constexpr quint32 PercentUndefined = 2;
    rows.beginTable(schema::Main());
    Random random(options.seed, DefinitionTexts);
    for (int i = 0; i < items.definitions.size(); ++i) {
        const QString name = texts.definitionName(random);
        const QString definition = random.chance(PercentUndefined) ? u"未定義"_s : texts.definition(random);
        rows.addRow({name, items.definitions.identifier(i), definition});
    }
}

void makeDocuments(const Options& options, const Items& items, const TextMaker& texts, RowSink& rows)
{
    rows.beginTable(schema::RefDoc());
    Random sizes(options.seed, DocumentSizes);
    std::vector<int> weights;
    qint64 weightLeft = 0;
    for (int i = 0; i < items.documents.size(); ++i) {
        int weight = sizes.between(100, 500);
        const quint32 form = sizes.below(100);
        if (form >= 92)
            weight *= 8;
        else if (form >= 62)
            weight *= 3;
        weights.push_back(weight);
        weightLeft += weight;
    }
    // What a document falls short of or exceeds its share by is made up by those that follow.
    qint64 bytesLeft = options.documentMegabytes * Megabyte;
    Random random(options.seed, DocumentTexts);
    for (int i = 0; i < items.documents.size(); ++i) {
        const int weight = weights[static_cast<std::size_t>(i)];
        const QString name = TextMaker::documentName(random);
        const QString text = texts.document(random, name, bytesLeft * weight / weightLeft);
        rows.addRow({name, items.documents.identifier(i), text});
        bytesLeft = std::max<qint64>(0, bytesLeft - bytesUtf8(text));
        weightLeft -= weight;
    }
}

void makeFiles(const Options& options, const Items& items, RowSink& rows)
{
    rows.beginTable(schema::RefFile());
    Random random(options.seed, FileTexts);
    for (int i = 0; i < items.files.size(); ++i)
        rows.addRow({TextMaker::fileName(random), items.files.identifier(i), u"未入力"_s});
}

void makeLinks(const Options& options, const Items& items, RowSink& rows)
{
    rows.beginTable(schema::Link());
    Random random(options.seed, LinkPairs);
    constexpr int Neighbourhood = 400;
    const int last = items.size() - 1;
    std::unordered_set<quint64> taken;
    while (static_cast<int>(taken.size()) < options.links) {
        const int source = random.between(0, last);
        int target = random.between(0, last);
        const quint32 form = random.below(100);
        if (form < 60) // what was registered about the same time belongs together
            target = std::clamp(source + random.between(-Neighbourhood, Neighbourhood), 0, last);
        else if (form < 85) // some data are linked from everywhere
            target = static_cast<int>(qint64(target) * target / (last + 1) * target / (last + 1));
        const auto low = static_cast<quint64>(std::min(source, target));
        const auto high = static_cast<quint64>(std::max(source, target));
        if (low == high || !taken.insert(low << 32U | high).second)
            continue;
        rows.addRow({items.identifier(source), items.identifier(target)});
    }
}

void makeCategories(const Options& options, const CategoryPlan& categories, RowSink& rows)
{
    rows.beginTable(schema::Category_ID());
    Random random(options.seed, CategoryNames);
    for (int i = 0; i < categories.size(); ++i)
        rows.addRow({categories.identifier(i), TextMaker::categoryName(random)});
}

/// Files data into categories, none into a category and one above or below it.
class FilingClerk
{
public:
    FilingClerk(const Items& items, const CategoryPlan& categories, Random random, RowSink& rows)
        : m_items(items), m_categories(categories), m_random(random), m_rows(rows),
          m_filed(static_cast<std::size_t>(items.size()))
    {
    }

    /// Files a datum once more; false when no category was found for it.
    bool file(int item)
    {
        std::vector<int>& filed = m_filed[static_cast<std::size_t>(item)];
        if (filed.size() == MostMembershipsPerDatum)
            return false;
        constexpr int Attempts = 20;
        for (int attempt = 0; attempt < Attempts; ++attempt) {
            // Old categories, which stand higher, have more members.
            const int category = std::min(anyCategory(), anyCategory());
            if (std::any_of(filed.begin(), filed.end(),
                            [&](int other) { return m_categories.onOneLine(category, other); }))
                continue;
            filed.push_back(category);
            m_rows.addRow({m_categories.identifier(category), m_items.identifier(item)});
            return true;
        }
        return false;
    }

private:
    int anyCategory() { return m_random.between(0, m_categories.size() - 1); }

    const Items& m_items;
    const CategoryPlan& m_categories;
    Random m_random;
    RowSink& m_rows;
    std::vector<std::vector<int>> m_filed; // by item
};

void makeMemberships(const Options& options, const Items& items, const CategoryPlan& categories,
                     RowSink& rows)
{
    rows.beginTable(schema::Category());
    if (options.memberships == 0)
        return;
    constexpr int PercentAtRegistration = 85;
    Random random(options.seed, Filing);
    const int last = items.size() - 1;
    std::vector<int> atRegistration(static_cast<std::size_t>(items.size()));
    for (qint64 i = 0; i < qint64(options.memberships) * PercentAtRegistration / 100; ++i)
        ++atRegistration[random.index(atRegistration.size())];

    FilingClerk clerk(items, categories, random, rows);
    int left = options.memberships;
    for (int item = 0; item <= last; ++item) {
        for (int times = atRegistration[static_cast<std::size_t>(item)]; times > 0; --times)
            left -= clerk.file(item) ? 1 : 0;
    }
    while (left > 0)
        left -= clerk.file(random.between(0, last)) ? 1 : 0;
}

} // namespace

QString refusal(const Options& options)
{
    if (std::min({options.definitions, options.documents, options.documentMegabytes, options.files,
                  options.links, options.categories, options.memberships}) < 0)
        return u"a count is negative"_s;
    for (const int count : {options.definitions, options.documents, options.files}) {
        if (count > ItemPlan::capacity())
            return u"at most %1 data of a kind have identifiers"_s.arg(ItemPlan::capacity());
    }
    if (options.documentMegabytes * Megabyte > options.documents * MostBytesPerDocument)
        return u"a document has at most %1 bytes on average"_s.arg(MostBytesPerDocument);
    const qint64 items = qint64(options.definitions) + options.documents + options.files;
    // A quarter of all pairs, so that free ones are found quickly.
    if (options.links > items * (items - 1) / 4)
        return u"there are too few data for that many links"_s;
    if (options.memberships > 0 && options.categories < 2 * MostMembershipsPerDatum)
        return u"filing needs at least %1 categories"_s.arg(2 * MostMembershipsPerDatum);
    if (options.memberships > items * MostMembershipsPerDatum / 2)
        return u"there are too few data for that many memberships"_s;
    return {};
}

void makeCorpus(const Options& options, RowSink& rows)
{
    const TextMaker texts;
    const Items items(options);
    const CategoryPlan categories(options.categories, Random(options.seed, CategoryShape));
    makeDefinitions(options, items, texts, rows);
    makeDocuments(options, items, texts, rows);
    makeFiles(options, items, rows);
    makeLinks(options, items, rows);
    makeCategories(options, categories, rows);
    makeMemberships(options, items, categories, rows);
}

} // namespace quillon::corpus
