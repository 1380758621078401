// What the person does in any window: keys that are held down, access keys, the window in which they act.
#include "tests/support/held_key.h"
#include "ui/widgets/menu_bar.h"
#include "ui/widgets/persons_input.h"

#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QtTest>

#include <array>
#include <cstring>
#include <functional>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

namespace
{

/// A window with two menus of the key F, one of the key L and a button of the key L.
struct Window : QMainWindow {
    Window()
    {
        setMenuBar(bar);
        for (QMenu* menu : {file, find, link})
            menu->addAction(u"項目(&X)"_s);
        auto* middle = new QWidget(this);
        auto* rows = new QVBoxLayout(middle);
        for (QWidget* control :
             {static_cast<QWidget*>(line), static_cast<QWidget*>(text), static_cast<QWidget*>(button)})
            rows->addWidget(control);
        setCentralWidget(middle);
        show();
        activateWindow();
        line->setFocus();
        connect(button, &QPushButton::clicked, this, [this] { ++clicks; });
    }
    /// The menu that is open, and closes it; null when there is none.
    QAction* closeMenu() const
    {
        QAction* open = QApplication::activePopupWidget() != nullptr ? bar->activeAction() : nullptr;
        while (QWidget* popup = QApplication::activePopupWidget())
            popup->close();
        bar->setActiveAction(nullptr);
        return open;
    }

    MenuBar* bar = new MenuBar(this);
    QMenu* file = bar->addMenu(u"ファイル(&F)"_s);
    QMenu* find = bar->addMenu(u"検索(&F)"_s);
    QMenu* link = bar->addMenu(u"リンク(&L)"_s);
    QLineEdit* line = new QLineEdit(this);
    QPlainTextEdit* text = new QPlainTextEdit(this);
    QPushButton* button = new QPushButton(u"読込(&L)"_s, this);
    int clicks = 0;
};

/// What X11 tells of a key before the toolkit does.
void tellNatively(quint8 type, quint8 key, quint32 moment)
{
    std::array<quint8, 32> event{};
    event[0] = type;
    event[1] = key;
    std::memcpy(&event[4], &moment, sizeof moment);
    qintptr result = 0;
    QVERIFY(!PersonsInput::ofApplication().repeats().nativeEventFilter("xcb_generic_event_t"_ba, event.data(),
                                                                       &result));
}

constexpr quint8 NativePress = 2;
constexpr quint8 NativeRelease = 3;
constexpr quint8 EnterKey = 36;

/// An event of a key as a window gets it, without the mark of a repetition.
void sendToWindow(QWidget& window, QEvent::Type type)
{
    QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, EnterKey, 0, 0, u"\r"_s);
    QCoreApplication::sendEvent(window.windowHandle(), &event);
}

} // namespace

class TestPersonsInput : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Window> m_window;

private Q_SLOTS:
    void init()
    {
        PersonsInput::ofApplication();
        m_window = std::make_unique<Window>();
        QApplication::setActiveWindow(m_window.get());
    }
    void cleanup() { m_window.reset(); }

    void keyHeldDownConfirmsOnce()
    {
        const QSignalSpy confirmed(m_window->line, &QLineEdit::returnPressed);
        holdKey(*m_window->line, Qt::Key_Return);
        QCOMPARE(confirmed.size(), 1);
    }

    void windowThatIsDestroyedOnTheScreenGetsNoReleaseThatWasKeptBack()
    {
        tellNatively(NativePress, EnterKey, 1000);
        sendToWindow(*m_window, QEvent::KeyPress);
        tellNatively(NativeRelease, EnterKey, 1100);
        sendToWindow(*m_window, QEvent::KeyRelease);
        QVERIFY(m_window->isVisible());
        m_window.reset();
        QVERIFY(QApplication::topLevelWidgets().isEmpty());
    }

    void lineBreaksAndCharactersRepeat()
    {
        holdKey(*m_window->text, Qt::Key_Return);
        QCOMPARE(m_window->text->toPlainText(), u"\n\n\n\n"_s);
        QKeyEvent character(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s, true);
        QCoreApplication::sendEvent(m_window->line, &character);
        QCOMPARE(m_window->line->text(), u"a"_s);
    }

    void keyHeldDownAnswersNoBox_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("modifiers");
        QTest::newRow("Enter") << int(Qt::Key_Return) << u"\r"_s << int(Qt::NoModifier);
        QTest::newRow("Esc") << int(Qt::Key_Escape) << u"\x1b"_s << int(Qt::NoModifier);
        QTest::newRow("the character of a button") << int(Qt::Key_N) << u"n"_s << int(Qt::NoModifier);
        QTest::newRow("its access key") << int(Qt::Key_N) << u"n"_s << int(Qt::AltModifier);
        QTest::newRow("Space") << int(Qt::Key_Space) << u" "_s << int(Qt::NoModifier);
    }

    void keyHeldDownAnswersNoBox()
    {
        QFETCH(int, key);
        QFETCH(QString, text);
        QFETCH(int, modifiers);
        QMessageBox box(m_window.get());
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        box.button(QMessageBox::No)->setText(u"いいえ(&N)"_s);
        box.setDefaultButton(QMessageBox::Yes);
        bool open = false;
        QTimer::singleShot(0, &box, [&] {
            for (int time = 0; time < 3; ++time) {
                for (const QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
                    QKeyEvent event(type, key, static_cast<Qt::KeyboardModifiers>(modifiers), text, true);
                    QCoreApplication::sendEvent(box.focusWidget(), &event);
                }
            }
            open = box.isVisible();
            box.done(QMessageBox::Cancel);
        });
        QCOMPARE(box.exec(), int(QMessageBox::Cancel));
        QVERIFY(open);
    }

    void accessKeyInABoxOpensNoMenuBehindIt()
    {
        QMessageBox box(m_window.get());
        bool open = false;
        QTimer::singleShot(0, &box, [&] {
            QTest::keyClick(box.focusWidget(), Qt::Key_F, Qt::AltModifier);
            open = m_window->closeMenu() != nullptr;
            box.done(QMessageBox::Cancel);
        });
        box.exec();
        QVERIFY(!open);
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
    }

    void accessKeyInAWindowThatAllOthersWaitForOpensItsMenu()
    {
        Window modal;
        modal.hide();
        modal.setWindowModality(Qt::ApplicationModal);
        modal.show();
        QCOMPARE(QApplication::activeModalWidget(), &modal);
        QTest::keyClick(modal.line, Qt::Key_F, Qt::AltModifier);
        QCOMPARE(modal.closeMenu(), modal.file->menuAction());
        QVERIFY(m_window->closeMenu() == nullptr);
    }

    void altPressedInABoxLeavesTheFirstMenuTheFirst()
    {
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
        QMessageBox box(m_window.get());
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        QTest::keyClick(&box, Qt::Key_Alt, Qt::AltModifier);
        box.hide();
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
    }

    void altThatIsReleasedInABoxIsReleased()
    {
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        // The toolkit closes the menu as soon as Alt is pressed again; what it begins may end in a box.
        QTest::keyPress(QApplication::activePopupWidget(), Qt::Key_Alt, Qt::AltModifier);
        m_window->closeMenu();
        QMessageBox box(m_window.get());
        box.setWindowModality(Qt::ApplicationModal);
        box.show();
        QTest::keyRelease(&box, Qt::Key_Alt);
        box.hide();
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
    }

    void accessKeyThatNothingHasTypesNothing()
    {
        for (QWidget* field :
             {static_cast<QWidget*>(m_window->line), static_cast<QWidget*>(m_window->text)}) {
            for (const Qt::KeyboardModifiers held :
                 {Qt::KeyboardModifiers(Qt::AltModifier), Qt::AltModifier | Qt::ShiftModifier,
                  Qt::KeyboardModifiers(Qt::MetaModifier), Qt::MetaModifier | Qt::ShiftModifier,
                  Qt::MetaModifier | Qt::AltModifier}) {
                QKeyEvent key(QEvent::KeyPress, Qt::Key_Q, held, u"q"_s);
                QCoreApplication::sendEvent(field, &key);
            }
        }
        QCOMPARE(m_window->line->text(), QString());
        QCOMPARE(m_window->text->toPlainText(), QString());
        QKeyEvent third(QEvent::KeyPress, Qt::Key_E, Qt::GroupSwitchModifier, u"€"_s);
        QCoreApplication::sendEvent(m_window->line, &third);
        QCOMPARE(m_window->line->text(), u"€"_s);
        QKeyEvent thirdElsewhere(QEvent::KeyPress, Qt::Key_E, Qt::ControlModifier | Qt::AltModifier, u"€"_s);
        QCoreApplication::sendEvent(m_window->line, &thirdElsewhere);
        QCOMPARE(m_window->line->text(), u"€€"_s);
    }

    void repetitionWithoutItsMarkIsOne()
    {
        const QSignalSpy confirmed(m_window->line, &QLineEdit::returnPressed);
        tellNatively(NativePress, EnterKey, 1000);
        sendToWindow(*m_window, QEvent::KeyPress);
        QCOMPARE(confirmed.size(), 1);
        for (quint32 moment = 1600; moment < 1800; moment += 40) {
            tellNatively(NativeRelease, EnterKey, moment);
            sendToWindow(*m_window, QEvent::KeyRelease);
            tellNatively(NativePress, EnterKey, moment);
            sendToWindow(*m_window, QEvent::KeyPress);
        }
        QCOMPARE(confirmed.size(), 1);
        // The same key pressed again is a press.
        tellNatively(NativeRelease, EnterKey, 2000);
        sendToWindow(*m_window, QEvent::KeyRelease);
        tellNatively(NativePress, EnterKey, 2001);
        sendToWindow(*m_window, QEvent::KeyPress);
        QCOMPARE(confirmed.size(), 2);
    }

    void controlSeesOneReleaseOfAKeyHeldDown()
    {
        struct Follower : QWidget {
            QStringList seen;
            void keyPressEvent(QKeyEvent* key) override { note(u"press"_s, *key); }
            void keyReleaseEvent(QKeyEvent* key) override { note(u"release"_s, *key); }
            void note(const QString& what, const QKeyEvent& key)
            {
                seen << what + (key.isAutoRepeat() ? u" again"_s : QString());
            }
        };
        auto* follower = new Follower;
        m_window->setCentralWidget(follower);
        follower->setFocusPolicy(Qt::StrongFocus);
        follower->show();
        follower->setFocus();
        // A plain key: commands that are held down do not even arrive.
        const auto send = [this](QEvent::Type type) {
            QKeyEvent event(type, Qt::Key_F2, Qt::NoModifier, 68, 0, 0);
            QCoreApplication::sendEvent(m_window->windowHandle(), &event);
        };
        tellNatively(NativePress, 68, 1000);
        send(QEvent::KeyPress);
        tellNatively(NativeRelease, 68, 1600);
        send(QEvent::KeyRelease);
        tellNatively(NativePress, 68, 1600);
        send(QEvent::KeyPress);
        tellNatively(NativeRelease, 68, 1700);
        send(QEvent::KeyRelease);
        QTRY_COMPARE(follower->seen, QStringList({u"press"_s, u"press again"_s, u"release"_s}));
    }

    void firstOfTwoMenusWithOneKeyOpensEveryTime()
    {
        for (int time = 0; time < 3; ++time) {
            QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
            QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
            QKeyEvent alt(QEvent::KeyPress, Qt::Key_Alt, Qt::AltModifier);
            QCoreApplication::sendEvent(m_window->line, &alt);
        }
    }

    void keyPressedAgainGoesToTheNextMenu()
    {
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        for (QMenu* next : {m_window->find, m_window->file, m_window->find}) {
            QVERIFY(QApplication::activePopupWidget() != nullptr);
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_F, Qt::AltModifier);
            QCOMPARE(m_window->bar->activeAction(), next->menuAction());
            QVERIFY(next->isVisible());
            QCOMPARE(next->activeAction(), next->actions().constFirst());
        }
        m_window->closeMenu();
    }

    void keyPressedAgainWithAltGoesToTheNextMenu()
    {
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        // The toolkit closes the menu as soon as Alt is pressed again.
        QTest::keyPress(QApplication::activePopupWidget(), Qt::Key_Alt, Qt::AltModifier);
        m_window->closeMenu();
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QTest::keyRelease(m_window->line, Qt::Key_Alt);
        QCOMPARE(m_window->closeMenu(), m_window->find->menuAction());
    }

    void disabledMenuTakesNoKey()
    {
        m_window->file->menuAction()->setEnabled(false);
        for (int time = 0; time < 2; ++time) {
            QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
            QCOMPARE(m_window->closeMenu(), m_window->find->menuAction());
        }
        m_window->find->menuAction()->setEnabled(false);
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QVERIFY(QApplication::activePopupWidget() == nullptr);
    }

    void menuWinsOverAControlWhileItIsEnabled()
    {
        for (int time = 0; time < 3; ++time) {
            QTest::keyClick(m_window->line, Qt::Key_L, Qt::AltModifier);
            QCOMPARE(m_window->closeMenu(), m_window->link->menuAction());
        }
        QCOMPARE(m_window->clicks, 0);
        m_window->link->menuAction()->setEnabled(false);
        for (int time = 1; time <= 3; ++time) {
            QTest::keyClick(m_window->line, Qt::Key_L, Qt::AltModifier);
            QCOMPARE(m_window->clicks, time);
        }
        QVERIFY(QApplication::activePopupWidget() == nullptr);
    }

    void entryOfTheOpenMenuGoesBeforeAnotherMenu()
    {
        const QSignalSpy chosen(m_window->file->addAction(u"フォルダ(&F)"_s), &QAction::triggered);
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        QKeyEvent again(QEvent::KeyPress, Qt::Key_F, Qt::AltModifier, u"f"_s);
        QCoreApplication::sendEvent(QApplication::activePopupWidget(), &again);
        QCOMPARE(chosen.size(), 1);
    }

    void accessKeyHeldDownOpensOneMenu()
    {
        QTest::keyClick(m_window->line, Qt::Key_F, Qt::AltModifier);
        for (int time = 0; time < 3; ++time) {
            QKeyEvent again(QEvent::KeyPress, Qt::Key_F, Qt::AltModifier, u"f"_s, true);
            QCoreApplication::sendEvent(QApplication::activePopupWidget(), &again);
        }
        QCOMPARE(m_window->closeMenu(), m_window->file->menuAction());
    }

    void windowInWhichThePersonActedActs()
    {
        const PersonsInput& input = PersonsInput::ofApplication();
        QTest::keyClick(m_window->line, Qt::Key_A);
        QCOMPARE(input.actingWindow(), m_window.get());
        Window other;
        QCOMPARE(input.actingWindow(), m_window.get()); // being shown is no act
        QTest::mouseClick(other.text->viewport(), Qt::LeftButton);
        QCOMPARE(input.actingWindow(), &other);
        // What is done in its boxes and menus is done in the window.
        QMessageBox box(m_window.get());
        box.show();
        QTest::keyClick(&box, Qt::Key_A);
        QCOMPARE(input.actingWindow(), m_window.get());
        QTest::mousePress(other.file, Qt::LeftButton);
        QCOMPARE(input.actingWindow(), &other);
        other.hide();
        QVERIFY(input.actingWindow() == nullptr);
    }

    void windowThatActsByItselfActsForAsLong()
    {
        const PersonsInput& input = PersonsInput::ofApplication();
        QTest::keyClick(m_window->line, Qt::Key_A);
        Window other;
        {
            const PersonsInput::Claim claim(other);
            QCOMPARE(input.actingWindow(), &other);
        }
        QCOMPARE(input.actingWindow(), m_window.get());
    }
};

QTEST_MAIN(TestPersonsInput)
#include "test_persons_input.moc"
