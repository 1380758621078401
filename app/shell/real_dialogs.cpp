#include "app/shell/real_dialogs.h"

#include "app/base/platform/any_names.h"
#include "app/shell/dialogs_on_screen.h"
#include "ui/widgets/one_line_input.h"
#include "ui/widgets/persons_input.h"
#include "ui/widgets/screen_room.h"
#include "ui/widgets/title_width.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSpacerItem>
#include <QTimer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// The window a box belongs in front of: the one whose action shows it, also as the second of two in a row, when no
/// window is active for a moment; else the main window. Always a window on the screen: one that has just been closed
/// may still count as the active one, and would take the box with it.
QWidget* parentOfBox()
{
    for (QWidget* window : {QApplication::activeModalWidget(), PersonsInput::ofApplication().actingWindow(),
                            QApplication::activeWindow()}) {
        if (window != nullptr && window->isVisible())
            return window;
    }
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->isVisible() && window->objectName() == u"frmMainMenu"_s)
            return window;
    }
    return nullptr;
}

/// Lets the windows paint where a dialog has been, before the work that its answer begins. What the person does
/// meanwhile waits.
void paintWhatWasCovered()
{
    // The window manager takes the dialog from the screen in its own time, and the system then asks for the painting.
    constexpr int Patience = 50; // milliseconds
    QEventLoop loop;
    QTimer::singleShot(Patience, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

/// Runs a dialog that may be destroyed together with its parent while it is on the screen.
template <class Dialog, class Answering> auto run(Dialog* dialog, Answering&& answering)
{
    const QPointer<QWidget> owner(dialog->parentWidget());
    const QPointer<Dialog> guard(dialog);
    const int result = dialog->exec();
    auto answer = answering(guard.data(), result);
    delete guard.data();
    if (owner && owner->isVisible())
        owner->activateWindow();
    paintWhatWasCovered();
    return answer;
}

QString withLineBreaks(QString text)
{
    return text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
}

/// Makes a box wide enough for its title beside the buttons of the title bar.
void makeRoomForTitle(QMessageBox& box)
{
    if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
        const QMargins margins = grid->contentsMargins();
        const int width = std::min(widthForTitle(box), widestBox(box) - margins.left() - margins.right());
        grid->addItem(new QSpacerItem(width, 0), grid->rowCount(), 0, 1, grid->columnCount());
    }
}

/// Lets the prompt of an input box take several lines where it is wider than the screen.
void breakLongLines(QLabel& prompt)
{
    const int room = roomInUsualFrame(prompt).width() - 2 * prompt.fontMetrics().height();
    if (prompt.sizeHint().width() <= room)
        return;
    prompt.setWordWrap(true);
    prompt.setMaximumWidth(room); // the box takes what the text would like to have for the least
}

QMessageBox::StandardButtons buttonsOf(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok:
        return QMessageBox::Ok;
    case Buttons::OkCancel:
        return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::YesNo:
        return QMessageBox::Yes | QMessageBox::No;
    case Buttons::YesNoCancel:
        return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

/// The button that Esc and the close box stand for.
QMessageBox::StandardButton escapeButtonOf(Buttons buttons)
{
    switch (buttons) {
    case Buttons::Ok:
        return QMessageBox::Ok;
    case Buttons::YesNo:
        return QMessageBox::No;
    case Buttons::OkCancel:
    case Buttons::YesNoCancel:
        break;
    }
    return QMessageBox::Cancel;
}

Answer answerOf(int button)
{
    switch (button) {
    case QMessageBox::Ok:
        return Answer::Ok;
    case QMessageBox::Yes:
        return Answer::Yes;
    case QMessageBox::No:
        return Answer::No;
    default:
        return Answer::Cancel;
    }
}

} // namespace

Answer RealDialogs::messageBox(const MessageBox& box)
{
    auto* shown = new QMessageBox(parentOfBox());
    shown->setTextFormat(Qt::PlainText); // a name in angle brackets is a name, not a tag
    shown->setText(withLineBreaks(box.text));
    shown->setWindowTitle(box.title);
    shown->setIcon(box.icon == Icon::Information ? QMessageBox::Information : QMessageBox::NoIcon);
    shown->setStandardButtons(buttonsOf(box.buttons));
    const bool asksYes = box.buttons == Buttons::YesNo || box.buttons == Buttons::YesNoCancel;
    shown->setDefaultButton(asksYes ? QMessageBox::Yes : QMessageBox::Ok);
    shown->setEscapeButton(escapeButtonOf(box.buttons));
    keepTextOnScreen(*shown);
    makeRoomForTitle(*shown);
    keepOnScreen(*shown);
    const Answer closed = answerOf(escapeButtonOf(box.buttons));
    return run(shown, [&](const QMessageBox* asked, int result) {
        return asked == nullptr || result == 0 ? closed : answerOf(result);
    });
}

std::optional<QString> RealDialogs::inputBox(const InputBox& box)
{
    auto* shown = new QInputDialog(parentOfBox());
    shown->setInputMode(QInputDialog::TextInput);
    shown->setLabelText(withLineBreaks(box.prompt));
    shown->setTextValue(box.content);
    shown->setWindowTitle(box.title);
    if (auto* label = shown->findChild<QLabel*>()) {
        label->setTextFormat(Qt::PlainText);
        breakLongLines(*label);
    }
    auto* field = shown->findChild<QLineEdit*>();
    if (field != nullptr)
        keepInputOnOneLine(*field);
    // Room for the titles and names that are typed here.
    shown->resize(shown->sizeHint().expandedTo({shown->fontMetrics().averageCharWidth() * 60, 0}));
    keepOnScreen(*shown);
    return run(shown, [field](const QInputDialog* asked, int result) -> std::optional<QString> {
        if (asked == nullptr || result != QDialog::Accepted)
            return std::nullopt;
        return field != nullptr ? field->text() : asked->textValue();
    });
}

QString toolkitFilter(const QString& filter)
{
    const QStringList parts = filter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString patterns = QString(parts[i + 1]).replace(u';', u' ');
        const bool named = parts[i].endsWith(u'(' + parts[i + 1] + u')');
        filters << (named ? parts[i].chopped(parts[i + 1].size() + 2) : parts[i] + u' ') + u'(' + patterns +
                       u')';
    }
    return filters.join(u";;"_s);
}

QString suffixOfFilter(const QString& filter)
{
    const QString pattern = filter.section(u'|', 1);
    const QString suffix = pattern.mid(2);
    const bool single = pattern.startsWith(u"*."_s) && !suffix.contains(u'*') && !suffix.contains(u';') &&
                        !suffix.contains(u'|');
    return single ? suffix : QString();
}

namespace
{

/// Whether the proposed file lies outside the folder in which the dialog has to start.
bool proposesFromElsewhere(const FileDialog& dialog)
{
    const QFileInfo proposed(QDir::fromNativeSeparators(dialog.fileName));
    return !dialog.folder.isEmpty() && proposed.isAbsolute() &&
           proposed.dir() != QDir(QDir::fromNativeSeparators(dialog.folder));
}

/// Puts the proposed name into a dialog that stands in its folder already.
void proposeName(QFileDialog& shown, const FileDialog& dialog)
{
    auto* nameField = shown.findChild<QLineEdit*>(u"fileNameEdit"_s);
    if (proposesFromElsewhere(dialog) && nameField != nullptr) {
        // In full, so that it is this very file that is chosen. Selecting it would make the dialog leave its folder.
        nameField->setText(QDir::toNativeSeparators(dialog.fileName));
        return;
    }
    const QFileInfo proposed(QDir::fromNativeSeparators(dialog.fileName));
    if (proposed.isAbsolute() && proposed.dir().exists())
        shown.setDirectory(proposed.path());
    shown.selectFile(proposed.fileName());
}

/// Lets files be chosen, too, whose names are no text: the toolkit does not list them. `chosen`: the address of one.
void offerUnreadableNames(QFileDialog& shown, QString& chosen)
{
    auto* grid = qobject_cast<QGridLayout*>(shown.layout());
    if (grid == nullptr)
        return; // a dialog of the system
    auto* names = new QComboBox;
    names->setObjectName(u"unreadableNames"_s);
    auto* label = new QLabel(u"文字化けした名前(&Z):"_s);
    label->setBuddy(names);
    names->setAccessibleName(u"文字化けした名前のファイル"_s);
    const int row = grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(names, row, 1);
    auto* choose = new QPushButton(u"選択(&S)"_s);
    choose->setObjectName(u"chooseUnreadableName"_s);
    choose->setAutoDefault(false);
    grid->addWidget(choose, row, 2);
    const auto fill = [names, label, choose](const QString& folder) {
        names->clear();
        names->addItem(u"（選択してください）"_s);
        for (const QString& path : platform::filesWithUnreadableNames(folder))
            names->addItem(platform::readableName(path.sliced(path.lastIndexOf(u'/') + 1)),
                           platform::addressOfPath(path));
        names->setVisible(names->count() > 1);
        label->setVisible(names->count() > 1);
        choose->setVisible(names->count() > 1);
    };
    QObject::connect(&shown, &QFileDialog::directoryEntered, names, fill);
    fill(shown.directory().absolutePath());
    QObject::connect(choose, &QPushButton::clicked, &shown, [&shown, &chosen, names] {
        chosen = names->currentData().toString();
        if (!chosen.isEmpty())
            static_cast<QDialog&>(shown).done(QDialog::Accepted);
    });
}

} // namespace

std::optional<QString> RealDialogs::fileDialog(const FileDialog& dialog)
{
#ifdef Q_OS_UNIX
    // The toolkit's dialog would write down where it was used last, in a file of the person's own folder.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, u"/dev/null"_s);
#endif
    auto* shown = new QFileDialog(parentOfBox());
    const bool saves = dialog.purpose == FileDialog::Purpose::Save;
    // The dialogs of the systems take a proposed name for one in the folder they show, and list no names but texts.
    shown->setOption(
        QFileDialog::DontUseNativeDialog,
        proposesFromElsewhere(dialog) ||
            (!saves && dialog.filter.isEmpty() &&
             !platform::filesWithUnreadableNames(QDir::fromNativeSeparators(dialog.folder)).isEmpty()));
    shown->setAcceptMode(saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    shown->setFileMode(saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    shown->setOption(QFileDialog::DontConfirmOverwrite, !dialog.promptBeforeOverwriting);
    if (!dialog.filter.isEmpty())
        shown->setNameFilter(toolkitFilter(dialog.filter));
    if (saves)
        shown->setDefaultSuffix(suffixOfFilter(dialog.filter));
    if (!dialog.folder.isEmpty())
        shown->setDirectory(QDir::fromNativeSeparators(dialog.folder));
    // The address of a file whose name is no text proposes none.
    if (!dialog.fileName.isEmpty() && !dialog.fileName.startsWith(u"file://"))
        proposeName(*shown, dialog);
    QString unreadable;
    if (!saves && dialog.filter.isEmpty())
        offerUnreadableNames(*shown, unreadable);
    keepOnScreen(*shown);
    return run(shown, [&unreadable](const QFileDialog* asked, int result) -> std::optional<QString> {
        if (!unreadable.isEmpty())
            return unreadable;
        if (asked == nullptr || result != QDialog::Accepted || asked->selectedFiles().isEmpty())
            return std::nullopt;
        return QDir::toNativeSeparators(asked->selectedFiles().constFirst());
    });
}

} // namespace quillon
