#include "app/shell/dialogs_on_screen.h"

#include "ui/widgets/screen_room.h"
#include "ui/widgets/scrolled_area.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QObject>
#include <QScreen>
#include <QScrollArea>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

/// What a box shows beside and below its text, with the gaps.
QSize roomOfTheRest(const QMessageBox& box, const QGridLayout& grid)
{
    const int line = box.fontMetrics().height();
    QSize rest = QSize(line, line).grownBy(grid.contentsMargins());
    if (const auto* icon = box.findChild<QLabel*>(u"qt_msgboxex_icon_label"_s);
        icon != nullptr && !icon->isHidden())
        rest.rwidth() += icon->sizeHint().width() + line;
    if (const auto* buttons = box.findChild<QDialogButtonBox*>())
        rest.rheight() += buttons->sizeHint().height() + line;
    return rest;
}

/// Puts the buttons of a dialog below each other where side by side they are too wide.
void stackWideButtons(const QDialog& dialog)
{
    auto* buttons = dialog.findChild<QDialogButtonBox*>();
    if (buttons == nullptr || dialog.layout() == nullptr)
        return;
    const QSize needed = buttons->sizeHint().grownBy(dialog.layout()->contentsMargins());
    if (needed.width() > roomInUsualFrame(dialog).width())
        buttons->setOrientation(Qt::Vertical);
}

/// Brings a dialog back onto its screen when it has become larger in appearing, and the thickness of its frame is known.
class AfterShowing : public QObject
{
public:
    explicit AfterShowing(QDialog& dialog) : QObject(&dialog), m_dialog(dialog)
    {
        dialog.installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show)
            QMetaObject::invokeMethod(
                this, [this] { fit(); }, Qt::QueuedConnection);
        // A message box would take the size it likes again. Its layout has had the event already.
        if (event->type() == QEvent::LayoutRequest && m_isShrunk)
            return true;
        return QObject::eventFilter(watched, event);
    }

private:
    void fit()
    {
        const QRect screen = m_dialog.screen()->availableGeometry();
        const QSize room = screen.size() - (m_dialog.frameSize() - m_dialog.size());
        if (m_dialog.size().boundedTo(room) != m_dialog.size()) {
            m_isShrunk = true;
            m_dialog.setMinimumSize(m_dialog.minimumSize().boundedTo(room));
            m_dialog.resize(m_dialog.size().boundedTo(room));
        }
        const QRect place = placeOnScreen(m_dialog.frameGeometry(), screen);
        if (place.topLeft() != m_dialog.frameGeometry().topLeft())
            m_dialog.move(place.topLeft());
    }

    QDialog& m_dialog;
    bool m_isShrunk = false;
};

} // namespace

int widestBox(const QWidget& box)
{
    // As the toolkit has it: on small screens as wide as the screen.
    const int screen = box.screen()->availableSize().width();
    return std::min(screen <= 1024 ? screen : std::min(screen - 480, 1000), roomInUsualFrame(box).width());
}

void keepTextOnScreen(QMessageBox& box)
{
    auto* label = box.findChild<QLabel*>(u"qt_msgbox_label"_s);
    auto* grid = qobject_cast<QGridLayout*>(box.layout());
    if (label == nullptr || grid == nullptr)
        return;
    box.ensurePolished();
    stackWideButtons(box);
    const int line = label->fontMetrics().height();
    const QSize screen = box.screen()->availableSize();
    // The toolkit never makes a box wider than this, whatever it holds.
    const QSize usual(qBound(300, screen.width() / 2 - 80, 900), screen.height() * 6 / 10);
    const QSize rest = roomOfTheRest(box, *grid);
    const QSize widest(widestBox(box), roomInUsualFrame(box).height());
    const QSize room = usual.boundedTo(widest - rest).expandedTo({4 * line, 2 * line});
    const auto sizeAt = [label, &box](int width) {
        return label->fontMetrics()
            .boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), static_cast<int>(Qt::TextWordWrap), box.text())
            .size();
    };
    const QSize needed = sizeAt(room.width());
    // What breaks lines at all is broken at this width by the box itself.
    const int narrow = std::min(screen.width() / 2, 500) - rest.width();
    const QSize narrower = sizeAt(std::clamp(narrow, 4 * line, room.width()));
    if (needed.width() <= room.width() && narrower.height() <= room.height()) {
        label->setWordWrap(true); // as the box does itself when it is shown
        return;
    }
    // A label of its own: the box changes how its own one breaks lines whenever it likes.
    auto* text = new QLabel(box.text());
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* area = new QScrollArea(&box);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(text);
    area->setFixedSize(room.boundedTo(needed + QSize(2 * line, 3 * line)));
    delete grid->replaceWidget(label, area);
    label->hide();
}

void keepOnScreen(QDialog& dialog)
{
    if (dialog.layout() == nullptr)
        return; // a dialog of the system
    dialog.ensurePolished();
    stackWideButtons(dialog);
    const QSize room = roomInUsualFrame(dialog);
    const auto needs = [&dialog] {
        dialog.layout()->activate();
        return dialog.layout()->totalMinimumSize();
    };
    const auto fits = [&room](const QSize& size) { return size.boundedTo(room) == size; };
    if (const QSize needed = needs(); !fits(needed)) {
        auto* content = new QWidget;
        content->setLayout(dialog.layout()); // with all that is in it
        auto* rows = new QVBoxLayout(&dialog);
        rows->setContentsMargins(0, 0, 0, 0);
        auto* area = new ScrolledArea(content, ScrolledArea::Least::FewLines, &dialog);
        area->setMinimumSize(needed.boundedTo(room));
        rows->addWidget(area);
        // What the layout has demanded of the dialog is over.
        dialog.setMinimumSize(0, 0);
        dialog.setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    }
    if (!fits(dialog.size()))
        dialog.resize(dialog.size().boundedTo(room));
    new AfterShowing(dialog);
}

} // namespace quillon
