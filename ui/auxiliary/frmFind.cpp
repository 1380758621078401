#include "ui/auxiliary/frmFind.h"

#include "app/base/error.h"
#include "app/base/ports/data_selection.h"
#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/data_selection.h"
#include "core/item_lists.h"
#include "store/data_kinds.h"
#include "store/filter_result.h"
#include "store/session.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/one_line_input.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/wait_cursor.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

frmFind::frmFind(Session& session, WindowRegistry& registry) : FormWindow(session, registry, u"frmFind"_s)
{
    setWindowTitle(u"全文検索画面"_s);
    arrange();
}

void frmFind::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);

    auto* textRow = new QHBoxLayout;
    txtFind = new QLineEdit(middle);
    keepInputOnOneLine(*txtFind);
    txtFind->setObjectName(u"txtFind"_s);
    txtFind->installEventFilter(this);
    textRow->addWidget(plainLabel(u"lblFind"_s, u"検索文字列 ："_s, txtFind, middle));
    textRow->addWidget(txtFind, 1);
    rows->addLayout(textRow);

    auto* kinds = new QHBoxLayout;
    QWidget* before = txtFind;
    const auto addBox = [&](const QString& name, const QString& caption) {
        auto* box = new QCheckBox(caption, middle);
        box->setObjectName(name);
        box->setChecked(true);
        kinds->addWidget(box);
        setTabOrder(before, box);
        before = box;
        return box;
    };
    chkMain = addBox(u"chkMain"_s, u"定義データ(&M)"_s);
    chkRefDoc = addBox(u"chkRefDoc"_s, u"文献データ(&R)"_s);
    chkRefFile = addBox(u"chkRefFile"_s, u"ファイルデータ(&F) "_s); // sic: the blank at the end
    kinds->addStretch(1);
    rows->addLayout(kinds);

    auto* buttons = new ButtonRow;
    QPushButton* cmdFind = addButton(middle, u"cmdFind"_s, u"検索(&S)"_s, &frmFind::cmdFind_Click);
    buttons->addWidget(cmdFind);
    setTabOrder(before, cmdFind);
    rows->addStretch(1);

    setContents(middle, buttons);
    txtFind->setFocus();
    resize(sizeHint().expandedTo({440, 0}));
    openOverMainWindow();
}

void frmFind::cmdFind_Click()
{
    const QString text = txtFind->text();
    const QString criteria = searchCriteria(text);
    const auto refuse = [this](const QString& reason) {
        session().dialogs.messageBox({.text = reason, .title = titles::SystemAudit});
    };
    if (!chkMain->isChecked() && !chkRefDoc->isChecked() && !chkRefFile->isChecked()) {
        refuse(u"検索するデータの種別が選択されていません。"_s);
        return;
    }
    if (text.isEmpty()) {
        refuse(u"検索する文字列が入力されていません。"_s);
        return;
    }
    const WaitCursor cursor;
    using Choice = std::pair<const QCheckBox*, const DataKind&>;
    const std::array choices = {Choice(chkMain, data_kinds::definition()),
                                Choice(chkRefDoc, data_kinds::document()),
                                Choice(chkRefFile, data_kinds::file())};
    for (const auto& [box, kind] : choices) {
        if (box->isChecked())
            listMatches(kind, criteria, text);
    }
    session().windows.dataSelection().setCaption(u"検索結果"_s);
}

void frmFind::listMatches(const DataKind& kind, const QString& criteria, const QString& searched)
{
    const auto matches = GetFilterResult(session().reporting, session().*kind.recordSet, criteria);
    const qint16 result = CreateDataList(session(), matches, SelectionUse::Show, ListFill::Append, searched);
    // sic: the list builder never answers this; a kind without matches adds no rows, and nobody says so.
    if (result == errors::NoCurrentRecord)
        session().dialogs.messageBox(
            {.text = u"指定されたデータが見つかりませんでした。"_s, .title = kind.title});
}

bool frmFind::txtFind_KeyPress(const QKeyEvent& key)
{
    const bool escape = key.key() == Qt::Key_Escape;
    if (!escape && key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter)
        return false;
    if (PersonsInput::ofApplication().composition().takes(*txtFind, key))
        return true;
    // A key that is held down searches or closes once, and one that has just answered a box does neither.
    if (key.isAutoRepeat())
        return true;
    if (escape)
        handleEvent(session().reporting, u"txtFind_KeyPress"_s, [this] { unload(); });
    return escape;
}

void frmFind::keyPressEvent(QKeyEvent* event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool onButton = qobject_cast<QPushButton*>(focusWidget()) != nullptr; // Enter presses it
    if (event->key() == Qt::Key_Escape && !event->isAutoRepeat())
        handleEvent(session().reporting, u"Form_KeyPress"_s, [this] { unload(); });
    else if (enter && !onButton && !event->isAutoRepeat())
        handleEvent(session().reporting, u"cmdFind_Click"_s, [this] { cmdFind_Click(); });
    else
        FormWindow::keyPressEvent(event);
}

bool frmFind::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != txtFind)
        return FormWindow::eventFilter(watched, event);
    return (event->type() == QEvent::KeyPress && txtFind_KeyPress(*static_cast<QKeyEvent*>(event))) ||
           FormWindow::eventFilter(watched, event);
}

} // namespace quillon
