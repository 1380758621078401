#include "ui/data/data_form.h"

#include "app/base/input_checks.h"
#include "app/base/ports/dialogs.h"
#include "app/base/titles.h"
#include "core/close_all_form.h"
#include "core/data_records.h"
#include "store/data_kinds.h"
#include "store/session.h"
#include "ui/data/find_bar.h"
#include "ui/data/window_switch.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/report_list.h"
#include "ui/widgets/status_panels.h"
#include "ui/widgets/window_registry.h"

#include <QAction>
#include <QKeyEvent>
#include <QShortcut>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

DataForm::DataForm(Session& session, WindowRegistry& registry, const Design& design)
    : FormWindow(session, registry, design.kind.windowName), m_design(design)
{
    setWindowTitle(design.title);
    buildFields();
    buildLists();
    sbStatus =
        new StatusPanels({{.objectName = {}, .text = design.modeText, .toolTip = design.modeToolTip},
                          {.objectName = {}, .text = {}, .toolTip = design.countToolTip, .stretches = true}},
                         this);
    sbStatus->setObjectName(u"sbStatus"_s);
    setStatusBar(sbStatus);
    arrange();
    connectLists();
    connectFindBar();
}

DataForm::~DataForm()
{
    if (session().LinkSourceForm == this)
        session().LinkSourceForm = nullptr;
}

TextField& DataForm::field(int index) const
{
    if (index < 0 || index >= static_cast<int>(m_txtFields.size()))
        throw Error(errors::IndexOutOfBounds);
    return *m_txtFields[static_cast<std::size_t>(index)];
}

QString DataForm::fieldText(int index) const
{
    return field(index).content();
}

void DataForm::setFieldText(int index, const QString& text)
{
    field(index).load(text);
}

void DataForm::setCaption(const QString& caption)
{
    // "[*]" in a window title is a place for a mark; doubled it stands for itself.
    QString title = caption;
    setWindowTitle(title.replace(u"[*]"_s, u"[*][*]"_s));
}

QString DataForm::modeText() const
{
    return sbStatus->text(1);
}

void DataForm::setMode(FormMode mode)
{
    const bool registers = mode == FormMode::Registration;
    for (const QString& name : {u"mnuLink"_s, u"mnuCategory"_s, u"mnuDataDelete"_s, u"mnuDataUpdate"_s})
        action(name)->setEnabled(!registers);
    action(u"mnuDataEntry"_s)->setEnabled(registers);
    sbStatus->setText(1, registers ? titles::RegistrationMode : titles::DisplayMode);
    if (!registers)
        return;
    setRow({});
    // The field with the keyboard may have been emptied after it was told.
    for (const qint16 index : {qint16(0), qint16(2)}) {
        if (!sbStatus->text(2).isEmpty() && focusWidget() == &fieldWidget(index))
            ShowInputCount(index);
    }
}

void DataForm::setRow(const DatumRow& row)
{
    m_row = row;
    m_seen = shownTexts();
}

void DataForm::setLinkRows(const std::vector<LinkRow>& rows)
{
    lsvLink->rows().clear();
    ReportModel::Fill fill(lsvLink->rows());
    for (const LinkRow& row : rows)
        fill.append({row.name, row.kind, row.identifier});
    fill.finish();
}

void DataForm::setCategoryRows(const std::vector<CategoryRow>& rows)
{
    m_categories.show(*lsvCategory, rows);
}

std::vector<CategoryRow> DataForm::categoryRows() const
{
    return m_categories.shown(*lsvCategory);
}

void DataForm::connectFindBar()
{
    const auto onKey = [this](QKeySequence::StandardKey key, auto act) {
        connect(new QShortcut(key, this), &QShortcut::activated, this,
                eventSlot(session().reporting, u"Form_KeyDown"_s, act));
    };
    onKey(QKeySequence::Find, [this] { m_findBar->open(); });
    onKey(QKeySequence::FindNext, [this] { m_findBar->goOn(false); });
    onKey(QKeySequence::FindPrevious, [this] { m_findBar->goOn(true); });
}

void DataForm::showPlaceOf(const QString& text)
{
    m_findBar->showFirst(text);
}

bool DataForm::showsDatum() const
{
    return modeText() == titles::DisplayMode;
}

DatumPlace DataForm::place() const
{
    return {.kind = &m_design.kind,
            .databaseFile = m_row.databaseFile,
            .identifier = fieldText(1),
            .row = m_row.number};
}

void DataForm::ShowInputCount(qint16 index)
{
    const auto show = [&](const QString& label, double room) {
        const double used = static_cast<double>(field(index).byteLength()) / 2;
        sbStatus->setText(2, label + u"：残り全角"_s + shortestDecimal(room - used) + u"文字"_s);
    };
    if (index == 0)
        show(u"名称"_s, m_design.kind.limits.name);
    else if (index == 2)
        show(m_design.contentLabel, m_design.kind.limits.room);
}

bool DataForm::CheckInput()
{
    return CheckDatum(session(), m_design.kind, shownTexts());
}

std::optional<SavedDatum> DataForm::registerShownDatum()
{
    const DatumTexts texts = shownTexts();
    auto saved = RegisterDatum(session(), m_design.kind, fieldText(1), texts, categoryRows());
    if (saved)
        hasSaved(*saved, texts);
    return saved;
}

void DataForm::hasSaved(const SavedDatum& saved, const DatumTexts& written)
{
    if (fieldText(1) != saved.place.identifier)
        setFieldText(1, saved.place.identifier);
    m_row = {.databaseFile = saved.place.databaseFile, .number = saved.place.row};
    m_seen = written;
    if (saved.vanishedCategories.isEmpty())
        return;
    auto categories = categoryRows();
    std::erase_if(categories, [&](const CategoryRow& category) {
        return saved.vanishedCategories.contains(category.identifier);
    });
    setCategoryRows(categories);
}

bool DataForm::isUnchanged()
{
    if (!showsDatum())
        return fieldText(0).isEmpty() && fieldText(2).isEmpty();
    // Of a datum that is gone, or that cannot be read, what was seen last is all there is to compare with.
    DatumTexts present = m_seen;
    guardedBy([](const Error&) {}, [&] { present = StoredTexts(session(), place()).value_or(m_seen); });
    return shownTexts() == present;
}

bool DataForm::holdsUnsavedInput() const
{
    if (m_deleted)
        return false;
    const Composition& composition = PersonsInput::ofApplication().composition();
    if (composition.isActiveIn(fieldWidget(0)) || composition.isActiveIn(fieldWidget(2)))
        return true;
    // Not by the database, unlike before closing: nobody is to wait for it, and what others wrote is safe there.
    return showsDatum() ? shownTexts() != m_seen : !fieldText(0).isEmpty() || !fieldText(2).isEmpty();
}

bool DataForm::QuerySave()
{
    if (m_deleted)
        return true;
    const bool shows = showsDatum();
    if (isUnchanged()) {
        m_saveResult = true;
        return true;
    }
    // When all windows are closed, the one in question is the one to be seen.
    if (isVisible())
        bringToFront();
    const Answer answer = session().dialogs.messageBox(
        {.text = shows ? u"現在のデータを更新しますか。"_s : u"現在のデータを登録しますか。"_s,
         .buttons = Buttons::YesNoCancel});
    if (answer == Answer::No) {
        if (shows)
            m_saveResult = true;
        return true;
    }
    if (answer != Answer::Yes) {
        if (shows)
            m_saveResult = false;
        return false;
    }
    // A save that is refused or fails keeps the window open with all its input, whatever was saved before.
    bool saved = false;
    handleEvent(session().reporting, shows ? u"mnuDataUpdate_Click"_s : u"mnuDataEntry_Click"_s,
                [&] { saved = shows ? UpdateData() : RegisterData(); });
    return saved;
}

void DataForm::SwitchDataWindow(const QString& identifier)
{
    switchDataWindow(registry(), identifier);
}

void DataForm::mnuDataDelete_Click()
{
    const QPointer<DataForm> self(this);
    if (DeleteDatum(session(), place(), 3) != Deletion::Deleted || self.isNull())
        return;
    m_deleted = true;
    unload();
}

void DataForm::mnuDataEntry_Click()
{
    RegisterData();
}

std::optional<SavedDatum> DataForm::updateShownDatum()
{
    const DatumTexts texts = shownTexts();
    try {
        auto saved = UpdateDatum(session(), {.place = place(), .texts = m_seen}, texts,
                                 m_design.updateClassifies ? categoryRows() : std::vector<CategoryRow>());
        if (saved)
            hasSaved(*saved, texts);
        return saved;
    } catch (const Error& error) {
        // Told once; whoever updates again overwrites what is there now.
        if (error.number == errors::ChangedMeanwhile)
            m_seen = StoredTexts(session(), place()).value_or(m_seen);
        throw;
    }
}

bool DataForm::UpdateData()
{
    const auto saved = updateShownDatum();
    if (!saved)
        return false;
    saved->messages.show(session());
    session().dialogs.messageBox({.text = u"本データを更新しました。"_s, .title = m_design.updateTitle});
    m_saveResult = true;
    return true;
}

void DataForm::mnuDataUpdate_Click()
{
    UpdateData();
}

void DataForm::mnuDataChange_Click()
{
    SwitchDataWindow(fieldText(1));
}

void DataForm::mnuDataCloseAll_Click()
{
    CloseAllForm(session());
}

void DataForm::mnuDataClose_Click()
{
    unload();
}

bool DataForm::txtFields_KeyDown(int index, QKeyEvent& event)
{
    Composition& composition = PersonsInput::ofApplication().composition();
    if (composition.takes(fieldWidget(index), event)) {
        ShowInputCount(static_cast<qint16>(index));
        return true;
    }
    // What is typed into a composition is no text yet.
    if (!composition.isActiveIn(fieldWidget(index))) {
        if (event.key() == Qt::Key_Escape) {
            // A key that is held down closes one window, not one after the other.
            if (event.isAutoRepeat())
                return true;
            const QPointer<DataForm> self(this);
            if (!unload() && self)
                ShowInputCount(static_cast<qint16>(index));
            return true;
        }
        // sic: every field is checked as if it were the name, with the limit of the content.
        if (warnsOnKey(event))
            MaxLengthCheck(session().reporting, field(index).byteLength(), m_design.kind.limits.typing,
                           u"名称"_s);
    }
    // Before the key acts, so the count is always one key behind.
    ShowInputCount(static_cast<qint16>(index));
    return false;
}

bool DataForm::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyRelease && Form_KeyUp(*static_cast<QKeyEvent*>(event)))
        return true;
    bool handled = false;
    for (int index = 0; index < 3; ++index) {
        if (watched == &field(index).widget())
            handled = fieldEvent(index, *event);
    }
    return handled || FormWindow::eventFilter(watched, event);
}

bool DataForm::fieldEvent(int index, QEvent& event)
{
    bool handled = false;
    switch (event.type()) {
    case QEvent::FocusIn:
        handleEvent(session().reporting, u"txtFields_GotFocus"_s,
                    [&] { ShowInputCount(static_cast<qint16>(index)); });
        break;
    case QEvent::InputMethod:
        // The keys of an input method never arrive here; what it does stands for them, one behind like them.
        handleEvent(session().reporting, u"txtFields_KeyDown"_s,
                    [&] { ShowInputCount(static_cast<qint16>(index)); });
        break;
    case QEvent::KeyPress:
        handleEvent(session().reporting, u"txtFields_KeyDown"_s,
                    [&] { handled = txtFields_KeyDown(index, static_cast<QKeyEvent&>(event)); });
        break;
    default:
        break;
    }
    return handled;
}

bool DataForm::Form_KeyUp(const QKeyEvent& event)
{
    // A key held down is released once.
    if (event.key() != Qt::Key_F2 || event.isAutoRepeat() ||
        PersonsInput::ofApplication().composition().isActiveIn(*this))
        return false;
    handleEvent(session().reporting, u"Form_KeyUp"_s, [&] { SwitchDataWindow(fieldText(1)); });
    return true;
}

void DataForm::keyReleaseEvent(QKeyEvent* event)
{
    if (!Form_KeyUp(*event))
        FormWindow::keyReleaseEvent(event);
}

} // namespace quillon
