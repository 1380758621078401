#include "app/base/ports/dialogs.h"
#include "core/categories.h"
#include "core/category_entry.h"
#include "store/identifiers.h"
#include "store/session.h"
#include "ui/main/category_tree.h"
#include "ui/main/fill_progress.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/copied_rows.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/report_list.h"

#include <QSet>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

void frmMainMenu::tvwCategory_OLEDragDrop(const QString& text)
{
    // sic: it reports under the name of deleting.
    guarded(session().reporting, u"DeleteData"_s, [&] {
        const int target = tvwCategory->dropHighlight();
        if (target > LastFixedNode && text.size() != IdentifierLength)
            return;
        fileIn(target, [&]() -> std::vector<ListedDatum> {
            // What is dropped may come from another list; then it is alone, whatever is selected in this one.
            const std::vector<int> rows = lsvData->selectedRows();
            const bool isSelected = std::any_of(rows.begin(), rows.end(), [&](int row) {
                return lsvData->rows().text(row, IdentifierColumn) == text;
            });
            if (isSelected && rows.size() > 1)
                return dataIn(rows);
            return datumToAskAbout(text);
        });
    });
    tvwCategory->setDropHighlight(0);
}

void frmMainMenu::tvwCategory_Paste()
{
    const std::vector<CopiedRow> copied = copiedRows();
    if (!treeHasNodes() || copied.empty())
        return;
    const int target = selectedNodeIndex();
    const bool isFiled = fileIn(target, [&] {
        if (copied.size() == 1)
            return datumToAskAbout(copied.front().identifier);
        std::vector<ListedDatum> listed;
        listed.reserve(copied.size());
        for (const CopiedRow& row : copied)
            listed.push_back({.identifier = row.identifier, .name = row.name});
        return listed;
    });
    // Who pastes looks at what comes; who drags has other data listed.
    if (isFiled && target == listedNodeIndex())
        ShowDataList(target);
}

std::vector<ListedDatum> frmMainMenu::datumToAskAbout(const QString& identifier)
{
    const auto present = presentDatum(session(), identifier);
    return present ? std::vector<ListedDatum>{*present} : std::vector<ListedDatum>();
}

bool frmMainMenu::fileIn(int node, const std::function<std::vector<ListedDatum>()>& dataToFile)
{
    if (node <= LastFixedNode) {
        session().dialogs.messageBox({.text = u"選択された項目はカテゴリではありません｡"_s});
        return false;
    }
    const CategoryRow category = presentCategory(session(), nodeKey(node));
    const std::vector<ListedDatum> listed = dataToFile();
    if (listed.empty())
        return false;
    const QString question =
        listed.size() > 1
            ? u"選択された複数のデータを [ "_s + category.name + u" ] に分類してもよろしいですか。"_s
            : u"[ "_s + listed.front().name + u" ] を[ "_s + category.name +
                  u" ]へ分類してもよろしいですか"_s; // sic: without a full stop
    if (session().dialogs.messageBox({.text = question, .buttons = Buttons::OkCancel}) != Answer::Ok)
        return false;
    classify(listed, category);
    return true;
}

void frmMainMenu::classify(const std::vector<ListedDatum>& listed, const CategoryRow& category)
{
    QSet<QString> gone;
    {
        const FillProgress::Showing showing(*m_progress, static_cast<qint64>(listed.size()));
        for (const std::size_t i :
             ClassifyManyData(session(), category, listed, [this] { m_progress->advance(); }))
            gone.insert(listed[i].identifier);
    }
    if (gone.isEmpty())
        return;
    const ReportModel& list = lsvData->rows();
    std::vector<int> rows;
    for (int row = 0; row < list.rowCount(); ++row) {
        if (gone.contains(list.text(row, IdentifierColumn).toString()))
            rows.push_back(row);
    }
    // What was passed over may have been copied before the list was filled; then the row shows what is there.
    const std::vector<ListedDatum> shown = dataIn(rows);
    std::vector<int> outdated;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!isStillThere(session(), shown[i]))
            outdated.push_back(rows[i]);
    }
    lsvData->rows().removeRowsAt(std::move(outdated));
}

} // namespace quillon
