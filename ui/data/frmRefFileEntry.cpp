#include "ui/data/frmRefFileEntry.h"

#include "app/base/input_checks.h"
#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/file_registration.h"
#include "store/session.h"
#include "ui/widgets/button_row.h"
#include "ui/widgets/cancellable_work.h"
#include "ui/widgets/described_controls.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/one_line_input.h"
#include "ui/widgets/paint_pace.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/wait_cursor.h"

#include <QAction>
#include <QBoxLayout>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QScopeGuard>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

frmRefFileEntry::frmRefFileEntry(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmRefFileEntry"_s)
{
    setWindowTitle(u"ファイルデータ登録画面"_s);
    buildMenus();
    arrange();
}

void frmRefFileEntry::buildMenus()
{
    QMenu* mnuData = addMenu(u"mnuData"_s, u"データ(&O)"_s);
    addEntry(mnuData, u"mnuDataEntry"_s, u"登録(&E)"_s, &frmRefFileEntry::mnuDataEntry_Click);
    addLine(mnuData, u"mnuOpeLine"_s);
    addEntry(mnuData, u"mnuOpeClose"_s, u"閉じる"_s); // does nothing
}

void frmRefFileEntry::arrange()
{
    auto* middle = new QWidget(this);
    auto* rows = new QVBoxLayout(middle);

    const auto addField = [&](int index) {
        auto* line = new QLineEdit(middle);
        line->setObjectName(u"txtFields(%1)"_s.arg(index));
        m_txtFields[static_cast<std::size_t>(index)] = line;
        return line;
    };

    auto* fields = new QGridLayout;
    QLineEdit* path = addField(0);
    path->installEventFilter(this);
    keepInputOnOneLine(*path);
    describe(path, u"登録するファイルのパス（場所）を入力する。"_s);
    cmdPath = addButton(middle, u"cmdPath"_s, u"参照(&P)"_s, &frmRefFileEntry::cmdPath_Click);
    fields->addWidget(plainLabel(u"lblPath"_s, u"ファイルの指定 :"_s, path, middle), 0, 0);
    fields->addWidget(path, 0, 1);
    fields->addWidget(cmdPath, 0, 2);
    QLineEdit* identifier = addField(1);
    identifier->setReadOnly(true);
    fields->addWidget(plainLabel(u"lblObjectID"_s, u"ＩＤ :"_s, identifier, middle), 1, 0);
    fields->addWidget(identifier, 1, 1, 1, 2);
    rows->addLayout(fields);

    lsvCategory = new ReportList(
        session().reporting, {{.header = u"カテゴリ名"_s}, {.header = u"識別符号"_s}, {.header = u"位置"_s}},
        middle);
    lsvCategory->setObjectName(u"lsvCategory"_s);
    lsvCategory->setAccessibleName(u"分類一覧"_s);
    lsvCategory->setColumnCharacters({24, 12, 8});
    lsvCategory->giveRoomTo({0});
    describe(lsvCategory, u"データの分類先。複数の登録も可能です。"_s);
    rows->addWidget(plainLabel(u"lblCategory"_s, lsvCategory->accessibleName(), lsvCategory, middle));
    rows->addWidget(lsvCategory, 1);

    m_progress = new QProgressBar(middle);
    m_progress->setObjectName(u"pgbCopy"_s);
    m_progress->setAccessibleName(u"コピーの進み具合"_s);
    m_progress->setTextVisible(false);
    m_progress->hide();
    auto* bottom = new QVBoxLayout;
    bottom->addWidget(m_progress);

    auto* buttons = new ButtonRow;
    cmdEntry = addButton(middle, u"cmdEntry"_s, u"登録(&E)"_s, &frmRefFileEntry::mnuDataEntry_Click);
    cmdCancel = addButton(middle, u"cmdCancel"_s, u"ｷｬﾝｾﾙ(&C)"_s, &frmRefFileEntry::cmdCancel_Click);
    buttons->addWidget(cmdEntry);
    buttons->addWidget(cmdCancel);
    bottom->addLayout(buttons);

    setContents(middle, bottom);
    setTabOrder(path, cmdPath);
    setTabOrder(cmdPath, identifier);
    setTabOrder(identifier, lsvCategory);
    setTabOrder(lsvCategory, cmdEntry);
    setTabOrder(cmdEntry, cmdCancel);
    path->setFocus();
    resize(sizeHint().expandedTo({520, 300}));
    openOverMainWindow();
}

QString frmRefFileEntry::fieldText(int index) const
{
    return index == 0 || index == 1 ? m_txtFields[static_cast<std::size_t>(index)]->text() : QString();
}

void frmRefFileEntry::setFieldText(int index, const QString& text)
{
    if (index == 0 || index == 1)
        m_txtFields[static_cast<std::size_t>(index)]->setText(text);
}

void frmRefFileEntry::setCategoryRows(const std::vector<CategoryRow>& rows)
{
    m_categories.show(*lsvCategory, rows);
}

std::vector<CategoryRow> frmRefFileEntry::categoryRows() const
{
    return m_categories.shown(*lsvCategory);
}

void frmRefFileEntry::cmdPath_Click()
{
    const auto chosen = session().dialogs.fileDialog(
        {.purpose = FileDialog::Purpose::Open,
         .filter = {},
         .fileName = m_chosenPath,
         .folder = m_chosenPath.isEmpty() ? session().RegisteredFolder : QString(),
         .promptBeforeOverwriting = false});
    m_chosenPath = chosen.value_or(m_chosenPath);
    // sic: a cancelled dialog, too, replaces what was typed. It is the person who may want that back.
    QLineEdit& path = *m_txtFields[0];
    path.selectAll();
    path.insert(m_chosenPath);
}

void frmRefFileEntry::mnuDataEntry_Click()
{
    const auto onFailure = [this](const Error& error) {
        CloseWithoutAsking = false;
        reportUntrapped(session().reporting, error, u"mnuDataEntry_Click"_s, titles::SystemAudit);
    };
    guardedBy(onFailure, [&] { registerFile(); });
}

void frmRefFileEntry::registerFile()
{
    const QString fileTitle = u"FILE"_s;
    CloseWithoutAsking = false;
    if (!NullCheck(session().reporting, fieldText(0)))
        return;
    switch (copyAndWrite()) {
    case FileRegistration::FileNotFound:
        session().dialogs.messageBox({.text = u"指定されたファイルが見つかりません。"_s, .title = fileTitle});
        break;
    case FileRegistration::NoFolderForFiles:
        session().dialogs.messageBox(
            {.text = titles::FileFolderMissing, .title = fileTitle, .icon = Icon::Information});
        break;
    case FileRegistration::Cancelled: // the window stays with what was entered
        break;
    case FileRegistration::Registered:
        if (const QFileInfo file(fieldText(0)); file.isAbsolute() && file.exists())
            session().RegisteredFolder = QDir::toNativeSeparators(file.path());
        session().dialogs.messageBox({.text = u"本データを登録しました。"_s, .title = fileTitle});
        CloseWithoutAsking = true;
        unload();
        break;
    }
}

FileRegistration frmRefFileEntry::copyAndWrite()
{
    FileEntry entry{.path = fieldText(0), .identifier = fieldText(1), .category = {}};
    if (const auto categories = categoryRows(); !categories.empty())
        entry.category = categories.front(); // of several only the first
    std::optional<WaitCursor> cursor;
    constexpr qint64 PaintInterval = 33; // milliseconds
    PaintPace pace(session().clock, {.first = PaintInterval, .next = PaintInterval});
    CancellableWork work(*this, *cmdCancel);
    m_copying = &work;
    const auto progress = [&](qint64 done, qint64 total) {
        if (!cursor) {
            cursor.emplace();
            pace.start();
        }
        if (!pace.isDue())
            return true;
        constexpr int Steps = 1000;
        m_progress->setRange(0, Steps);
        m_progress->setValue(total > 0 ? static_cast<int>(done * Steps / total) : 0);
        m_progress->show();
        m_progress->parentWidget()->layout()->activate();
        m_progress->repaint();
        const bool goesOn = work.goesOn();
        cursor.emplace(); // it ends when events run
        return goesOn;
    };
    const auto finish = qScopeGuard([this] {
        m_progress->hide();
        m_copying = nullptr;
    });
    QString identifier = entry.identifier;
    const FileRegistration outcome = RegisterFile(session(), entry, progress, &identifier);
    setFieldText(1, identifier); // another one when it had been taken meanwhile
    return outcome;
}

void frmRefFileEntry::cmdCancel_Click()
{
    if (m_copying != nullptr) {
        m_copying->cancel();
        return;
    }
    CloseWithoutAsking = true;
    unload();
}

bool frmRefFileEntry::holdsUnsavedInput() const
{
    return !fieldText(0).isEmpty() || PersonsInput::ofApplication().composition().isActiveIn(*m_txtFields[0]);
}

bool frmRefFileEntry::queryUnload()
{
    bool closes = true;
    if (!CloseWithoutAsking && !fieldText(0).isEmpty()) {
        const Answer answer = session().dialogs.messageBox({.text = u"現在のデータを登録しますか。"_s,
                                                            .title = titles::FileData,
                                                            .buttons = Buttons::YesNoCancel});
        if (answer == Answer::Yes) {
            // A registration closes the window itself, which is what is going on already.
            mnuDataEntry_Click();
            closes = CloseWithoutAsking;
            // Should the window stay for another's sake, there is nothing in it to be registered again.
            if (closes)
                setFieldText(0, {});
        } else {
            closes = answer == Answer::No;
        }
    }
    CloseWithoutAsking = false;
    return closes;
}

bool frmRefFileEntry::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto& key = static_cast<const QKeyEvent&>(*event);
        const bool enter = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter;
        // A key that is held down registers once.
        if (PersonsInput::ofApplication().composition().takes(*this, key) || (enter && key.isAutoRepeat()))
            return true;
    }
    return FormWindow::eventFilter(watched, event);
}

void frmRefFileEntry::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        if (event->isAutoRepeat())
            return;
        handleEvent(session().reporting, u"Form_KeyDown"_s, [this] { unload(); });
        event->accept();
        return;
    }
    // Not by the field's own signal: what has the focus after the copy would get the key, too.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && focusWidget() == m_txtFields[0]) {
        event->accept();
        handleEvent(session().reporting, u"cmdEntry_Click"_s, [this] { mnuDataEntry_Click(); });
        return;
    }
    FormWindow::keyPressEvent(event);
}

} // namespace quillon
