#include "app/base/ports/dialogs.h"
#include "core/categories.h"
#include "core/data_records.h"
#include "store/session.h"
#include "ui/main/fill_progress.h"
#include "ui/main/frmMainMenu.h"
#include "ui/widgets/report_list.h"

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

std::vector<ListedDatum> frmMainMenu::dataIn(const std::vector<int>& rows) const
{
    std::vector<ListedDatum> listed;
    listed.reserve(rows.size());
    for (const int row : rows)
        listed.push_back({.identifier = lsvData->rows().text(row, IdentifierColumn).toString(),
                          .name = lsvData->rows().text(row, 0).toString()});
    return listed;
}

void frmMainMenu::mnuDataView_Click()
{
    guardedBy([this](const Error& error) { showFailure(error, u"mnuDataView_Click"_s); },
              [&] {
                  const int row = lsvData->selectedRow();
                  // Rows without a selection are like no rows: there is nothing to show.
                  if (row < 0) {
                      session().dialogs.messageBox(
                          {.text = u"データが選択されていません。"_s, .title = titles::SystemOperation});
                      return;
                  }
                  ShowData(session(), lsvData->rows().text(row, IdentifierColumn).toString());
              });
}

void frmMainMenu::mnuDataDelete_Click()
{
    guardedBy([this](const Error& error) { showFailure(error, u"mnuDataDelete_Click"_s); },
              [&] {
                  std::vector<int> rows = lsvData->selectedRows();
                  if (rows.empty()) {
                      session().dialogs.messageBox({.text = u"データが選択されていません。"_s});
                      return;
                  }
                  std::vector<ListedDatum> listed = dataIn(rows);
                  const bool several = CheckMultiSelect();
                  if (!several) {
                      const auto present = presentDatum(session(), listed.front().identifier);
                      if (!present)
                          return;
                      listed.front() = *present;
                  }
                  const QString question = several ? u"選択された複数のデータを削除しますか。"_s
                                                   : u"<"_s + listed.front().name + u"> を削除しますか。"_s;
                  if (session().dialogs.messageBox({.text = question, .buttons = Buttons::OkCancel}) !=
                      Answer::Ok)
                      return;
                  std::vector<Deletion> outcome;
                  {
                      const FillProgress::Showing showing(*m_progress, static_cast<qint64>(rows.size()));
                      outcome = DeleteManyData(session(), listed, [this] { m_progress->advance(); });
                  }
                  // Only rows whose data are really gone leave the list, and only once that is durable.
                  std::vector<int> gone;
                  for (std::size_t i = 0; i < rows.size(); ++i) {
                      if (outcome[i] != Deletion::Kept)
                          gone.push_back(rows[i]);
                  }
                  lsvData->rows().removeRowsAt(std::move(gone));
              });
}

void frmMainMenu::mnuDataCategoryDelete_Click()
{
    // What is listed tells what the rows are taken out of; the selected node may have moved on already.
    const int listed = listedNodeIndex();
    if (listed <= LastFixedNode) {
        session().dialogs.messageBox({.text = u"カテゴリが選択されていません。"_s});
        return;
    }
    std::vector<int> rows = lsvData->selectedRows();
    if (rows.empty()) {
        session().dialogs.messageBox({.text = u"データが選択されていません。"_s});
        return;
    }
    TakeOutOfCategory(session(), m_listed, dataIn(rows));
    lsvData->rows().removeRowsAt(std::move(rows));
}

void frmMainMenu::DeleteSelectedData()
{
    const auto onFailure = [this](const Error& error) {
        session().dialogs.messageBox(
            {.text = u"対処不能なエラーが発生しました。\r\nLOCATION : DeleteData\r\nEXPLANATION : "_s +
                     error.description,
             .title = titles::FailureCountermeasures});
    };
    guardedBy(onFailure, [&] {
        const int row = lsvData->selectedRow();
        if (row < 0) {
            session().dialogs.messageBox({.text = u"データが選択されていません。"_s});
            return;
        }
        // Nothing is asked: what is deleted must be what the list shows.
        const ListedDatum listed = dataIn({row}).front();
        const auto present = presentDatum(session(), listed.identifier);
        if (!present)
            return;
        if (present->name == listed.name)
            DeleteData(session(), listed.identifier, 2);
        else
            tellNotFound(session(), 1);
    });
}

void frmMainMenu::showFailure(const Error& error, const QString& handler)
{
    reportUntrapped(session().reporting, error, handler, titles::SystemOperation);
}

} // namespace quillon
