#include "app/shell/frmSplash.h"

#include "app/base/titles.h"
#include "store/session.h"
#include "ui/widgets/event_edge.h"
#include "ui/widgets/scrolled_area.h"

#include <QFontInfo>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace quillon
{

namespace
{

constexpr int TickMilliseconds = 100;
constexpr qint16 LastTick = 30;

/// The font without the toolkit's search for substitutes, which takes longer than loading it; nothing where it lacks a
/// character of the text.
std::optional<QFont> withoutSubstitutes(QFont font, const QString& text)
{
    font.setStyleStrategy(QFont::NoFontMerging);
    const QFontMetrics metrics(font);
    const QList<uint> characters = text.toUcs4();
    if (std::all_of(characters.begin(), characters.end(), [&](uint one) { return metrics.inFontUcs4(one); }))
        return font;
    return std::nullopt;
}

QLabel* makeLabel(QWidget* parent, const QString& name, const QString& text, const QStringList& families,
                  double scale, bool bold)
{
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText); // runs of blanks stay as they stand
    label->setAlignment(Qt::AlignCenter);
    QFont font = label->font();
    // The font itself may be given in pixels. Asked of the one that is loaded anyway: each further one takes time.
    const double points = QFontInfo(font).pointSizeF();
    font.setFamilies(families + font.families());
    font.setPointSizeF(points * scale);
    font.setBold(bold);
    // The labels with families of their own keep their texts.
    if (!families.isEmpty())
        font = withoutSubstitutes(font, text).value_or(font);
    label->setFont(font);
    return label;
}

} // namespace

frmSplash::frmSplash(Session& session, WindowRegistry& registry)
    : FormWindow(session, registry, u"frmSplash"_s)
{
    setUp();
    Form_Load();
}

void frmSplash::setUp()
{
    setWindowTitle(titles::Application);

    const QStringList roman = {u"Times New Roman"_s, u"Liberation Serif"_s, u"Nimbus Roman"_s, u"Tinos"_s,
                               u"DejaVu Serif"_s};
    const QStringList gothic = {u"ＭＳ Ｐゴシック"_s, u"MS PGothic"_s};

    Frame1 = new QFrame(this);
    Frame1->setObjectName(u"Frame1"_s);
    Frame1->setFrameStyle(static_cast<int>(QFrame::Box) | static_cast<int>(QFrame::Sunken));
    lblProductName = makeLabel(Frame1, u"lblProductName"_s, u"Quillon"_s, roman, 4.0, true);
    lblPlatform = makeLabel(Frame1, u"lblPlatform"_s,
                            u"(Self Educational                              DataBase Management System)"_s,
                            roman, 1.1, false);
    lblCompanyProduct =
        makeLabel(Frame1, u"lblCompanyProduct"_s, u"自己教育的データベース管理システム"_s, gothic, 1.5, true);
    lblVersion = makeLabel(Frame1, u"lblVersion"_s, u"=System Ver.0.XX (Public)="_s, {}, 1.0, false);

    pgbSplash = new QProgressBar(Frame1);
    pgbSplash->setObjectName(u"pgbSplash"_s);
    pgbSplash->setAccessibleName(u"起動の進み具合"_s);
    pgbSplash->setTextVisible(false);
    pgbSplash->hide();

    cmdClose = addButton(Frame1, u"cmdClose"_s, u"閉じる(&C)"_s, &frmSplash::cmdClose_Click);
    cmdClose->setDefault(true);
    cmdClose->hide();

    auto* closing = new QHBoxLayout;
    closing->addStretch();
    closing->addWidget(cmdClose);

    // All distances follow the size of the text, so that nothing is cramped at a large scale.
    const int unit = fontMetrics().height();
    auto* texts = new QWidget;
    auto* lines = new QVBoxLayout(texts);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(unit / 2);
    lines->addStretch();
    lines->addWidget(lblProductName);
    lines->addWidget(lblPlatform);
    lines->addSpacing(unit);
    lines->addWidget(lblCompanyProduct);
    lines->addWidget(lblVersion);
    lines->addStretch();
    auto* column = new QVBoxLayout(Frame1);
    column->setContentsMargins(2 * unit, 2 * unit, 2 * unit, unit);
    column->setSpacing(unit / 2);
    column->addWidget(new ScrolledArea(texts, ScrolledArea::Least::FewLines, Frame1), 1);
    column->addSpacing(unit);
    column->addWidget(pgbSplash);
    column->addLayout(closing);

    auto* background = new QWidget(this);
    auto* margins = new QVBoxLayout(background);
    margins->setContentsMargins(unit / 2, unit / 2, unit / 2, unit / 2);
    margins->addWidget(Frame1);
    setContents(background);

    tmrSwitch = new QTimer(this);
    tmrSwitch->setObjectName(u"tmrSwitch"_s);
    tmrSwitch->setInterval(TickMilliseconds);
    connect(tmrSwitch, &QTimer::timeout, this,
            eventSlot(this->session().reporting, u"tmrSwitch_Timer"_s, [this] { tmrSwitch_Timer(); }));
}

void frmSplash::Form_Load()
{
    pgbSplash->setRange(0, LastTick);
}

void frmSplash::startTiming()
{
    // No frame: there is nothing to press while the program starts.
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    pgbSplash->setVisible(true);
    lblVersion->setText(titles::Version);
    tmrSwitch->start();
}

void frmSplash::showInformation()
{
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                   Qt::WindowCloseButtonHint);
    lblVersion->setText(titles::Version);
    cmdClose->setVisible(true);
}

void frmSplash::tmrSwitch_Timer()
{
    ++SplashTicks;
    pgbSplash->setValue(SplashTicks);
    if (SplashTicks >= LastTick) {
        tmrSwitch->stop();
        unload();
    }
}

void frmSplash::cmdClose_Click()
{
    unload();
}

bool frmSplash::queryUnload()
{
    // The timed splash gives way to the main window, not to a window manager's wish to close it.
    return !tmrSwitch->isActive();
}

void frmSplash::keyPressEvent(QKeyEvent* event)
{
    // Esc closes an information window as a person expects; a key cannot end the timed one.
    if (event->matches(QKeySequence::Cancel) && !cmdClose->isHidden())
        cmdClose->click();
    else
        FormWindow::keyPressEvent(event);
}

void frmSplash::showEvent(QShowEvent* event)
{
    FormWindow::showEvent(event);
    if (event->spontaneous())
        return;
    setFixedSize(sizeHint().boundedTo(roomOnScreen()));
    growWhereItScrolls();
    if (const QScreen* at = screen()) {
        QRect place = frameGeometry();
        place.moveCenter(at->availableGeometry().center());
        move(place.topLeft());
    }
}

} // namespace quillon
