#include "tools/sample_database.h"

#include "store/database.h"
#include "store/record_set.h"
#include "store/schema.h"

#include <QStringList>

#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace quillon::tour
{

namespace
{

using Rows = std::vector<QStringList>;

void fill(const std::shared_ptr<Database>& database, const TableSchema& table, const Rows& rows)
{
    const auto recordSet = RecordSet::openTable(database, table);
    for (const QStringList& row : rows) {
        recordSet->addNew();
        for (int i = 0; i < row.size(); ++i)
            recordSet->setField(i, row[i]);
        recordSet->update();
    }
}

Rows definitions()
{
    return {
        {u"煎茶"_s, u"M-260401-001"_s,
         u"蒸した茶葉を揉みながら乾燥させた緑茶。日本で最も多く飲まれている。"_s},
        {u"玉露"_s, u"M-260401-002"_s,
         u"収穫前の約二十日間、日光を遮って育てた茶葉から作る緑茶。旨味が強い。"_s},
        {u"抹茶"_s, u"M-260401-003"_s, u"碾茶を石臼で挽いた粉末の茶。湯に溶いて飲む。"_s},
        {u"碾茶"_s, u"M-260401-004"_s,
         u"覆いをして育てた茶葉を、蒸したのち揉まずに乾燥させた茶。抹茶の原料。"_s},
        {u"ほうじ茶"_s, u"M-260401-005"_s, u"煎茶や番茶を強火で焙じた茶。香ばしく、カフェインが少ない。"_s},
        {u"玄米茶"_s, u"M-260402-001"_s, u"炒った玄米を番茶や煎茶に混ぜた茶。"_s},
        {u"番茶"_s, u"M-260402-002"_s, u"成長した葉や茎から作る、さっぱりした日常の茶。"_s},
        {u"紅茶"_s, u"M-260402-003"_s, u"茶葉を完全に発酵（酸化）させた茶。世界で最も多く生産される。"_s},
        {u"ウーロン茶"_s, u"M-260402-004"_s, u"発酵を途中で止めた半発酵茶。青茶ともいう。"_s},
        {u"カテキン"_s, u"M-260403-001"_s, u"茶の渋味の主成分であるポリフェノール。抗酸化作用をもつ。"_s},
        {u"テアニン"_s, u"M-260403-002"_s, u"茶に特有のアミノ酸。旨味と甘味のもと。"_s},
        {u"カフェイン"_s, u"M-260403-003"_s, u"苦味成分。覚醒作用と利尿作用がある。"_s},
        {u"蒸製"_s, u"M-260404-001"_s, u"摘んだ葉を蒸気で加熱し、酸化酵素の働きを止める工程。"_s},
        {u"揉捻"_s, u"M-260404-002"_s, u"葉に力を加えて揉み、水分を均一にして成分を出やすくする工程。"_s},
        {u"萎凋"_s, u"M-260404-003"_s, u"未定義"_s},
        {u"覆下栽培"_s, u"M-260405-001"_s, u"藁や布で茶園を覆い、日光を遮る栽培法。渋味が減り旨味が増す。"_s},
        {u"茶柱"_s, u"M-260405-002"_s, u"未定義"_s},
        {u"急須"_s, u"M-260406-001"_s, u"茶葉と湯を入れて茶を淹れる、取っ手のついた器。"_s},
        {u"茶筅"_s, u"M-260406-002"_s, u"抹茶を点てるための、竹を細く割いた道具。"_s},
        {u"一期一会"_s, u"M-260407-001"_s,
         u"茶会は一生に一度の出会いと心得て誠意を尽くすべきだという教え。"_s},
    };
}

Rows documents()
{
    return {
        {u"煎茶のおいしい淹れ方"_s, u"R-260410-001"_s,
         u"一、湯を湯冷ましに移し、八十度ほどまで冷ます。\r\n二、急須に茶葉を一人あたり二グラム入れる。\r\n"
         u"三、湯を静かに注ぎ、一分待つ。\r\n四、少しずつ回し注ぎ、最後の一滴まで注ぎ切る。"_s},
        {u"茶の歴史年表"_s, u"R-260410-002"_s,
         u"八〇五年　最澄が唐から茶の種を持ち帰る。\r\n一一九一年　栄西が宋から茶を伝える。\r\n"
         u"一五八七年　北野大茶湯が催される。\r\n一七三八年　永谷宗円が青製煎茶製法を完成させる。"_s},
        {u"覆下栽培の手引き"_s, u"R-260411-001"_s,
         u"新芽が一、二枚開いたころ、遮光率およそ七割の資材で覆う。十日後に九割以上へ強め、二十日ほどで摘む。"_s},
    };
}

Rows files()
{
    return {{u"茶園の地図.png"_s, u"F-260412-001"_s, u"未入力"_s},
            {u"収穫量.csv"_s, u"F-260412-002"_s, u"未入力"_s}};
}

Rows categories()
{
    return {{u"A"_s, u"茶の種類"_s}, {u"A-A"_s, u"緑茶"_s}, {u"A-A-A"_s, u"覆いをする茶"_s},
            {u"A-B"_s, u"発酵茶"_s}, {u"B"_s, u"成分"_s},   {u"C"_s, u"製法"_s},
            {u"C-A"_s, u"栽培"_s},   {u"C-B"_s, u"加工"_s}, {u"D"_s, u"道具と文化"_s},
            {u"D-A"_s, u"道具"_s}};
}

Rows memberships()
{
    return {{u"A-A"_s, u"M-260401-001"_s},   {u"A-A-A"_s, u"M-260401-002"_s}, {u"A-A-A"_s, u"M-260401-003"_s},
            {u"A-A-A"_s, u"M-260401-004"_s}, {u"A-A"_s, u"M-260401-005"_s},   {u"A-A"_s, u"M-260402-001"_s},
            {u"A-A"_s, u"M-260402-002"_s},   {u"A-B"_s, u"M-260402-003"_s},   {u"A-B"_s, u"M-260402-004"_s},
            {u"B"_s, u"M-260403-001"_s},     {u"B"_s, u"M-260403-002"_s},     {u"B"_s, u"M-260403-003"_s},
            {u"C-B"_s, u"M-260404-001"_s},   {u"C-B"_s, u"M-260404-002"_s},   {u"C-A"_s, u"M-260405-001"_s},
            {u"D-A"_s, u"M-260406-001"_s},   {u"D-A"_s, u"M-260406-002"_s},   {u"D"_s, u"M-260407-001"_s},
            {u"A"_s, u"R-260410-002"_s},     {u"C-A"_s, u"R-260411-001"_s}};
}

Rows links()
{
    return {{u"M-260401-003"_s, u"M-260401-004"_s}, {u"M-260401-003"_s, u"M-260406-002"_s},
            {u"M-260401-001"_s, u"R-260410-001"_s}, {u"M-260401-001"_s, u"M-260403-001"_s},
            {u"M-260401-002"_s, u"M-260403-002"_s}, {u"M-260401-002"_s, u"M-260405-001"_s},
            {u"M-260401-003"_s, u"R-260410-002"_s}, {u"M-260405-001"_s, u"R-260411-001"_s},
            {u"M-260405-001"_s, u"F-260412-001"_s}};
}

} // namespace

void createSampleDatabase(const QString& path)
{
    const auto database = Database::create(path);
    for (const TableSchema* table : schema::all())
        database->execute(table->statement);
    fill(database, schema::Main(), definitions());
    fill(database, schema::RefDoc(), documents());
    fill(database, schema::RefFile(), files());
    fill(database, schema::Category_ID(), categories());
    fill(database, schema::Category(), memberships());
    fill(database, schema::Link(), links());
}

} // namespace quillon::tour
