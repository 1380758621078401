// The controls of a window and the row that answers it, with much room and with little.
#include "ui/widgets/button_row.h"
#include "ui/widgets/window_contents.h"

#include <QBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

class TestWindowContents : public QObject
{
    Q_OBJECT

    std::unique_ptr<WindowContents> m_contents;
    QList<QLineEdit*> m_fields;
    QPushButton* m_leading = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_cancel = nullptr;

    void resize(const QSize& size)
    {
        m_contents->resize(size);
        QCoreApplication::processEvents();
    }
    QRect place(const QWidget& widget) const
    {
        return {widget.mapTo(m_contents.get(), QPoint(0, 0)), widget.size()};
    }
    bool isInView(const QWidget& widget) const
    {
        return widget.visibleRegion().boundingRect() == widget.rect();
    }
    ScrolledArea& body() const { return *m_contents->widget()->findChild<ScrolledArea*>(); }

private Q_SLOTS:
    void init()
    {
        auto* controls = new QWidget;
        auto* rows = new QVBoxLayout(controls);
        m_fields.clear();
        for (int number = 0; number < 12; ++number) {
            m_fields << new QLineEdit(controls);
            m_fields.constLast()->setMinimumWidth(300);
            rows->addWidget(m_fields.constLast());
        }
        m_leading = new QPushButton(u"ファイルを指定"_s);
        m_ok = new QPushButton(u"OK"_s);
        m_cancel = new QPushButton(u"Cancel"_s);
        auto* row = new ButtonRow;
        row->addLeading(m_leading);
        row->addWidget(m_ok);
        row->addWidget(m_cancel);
        m_contents = std::make_unique<WindowContents>(controls, row);
        m_contents->show();
        resize(m_contents->sizeHint());
    }
    void cleanup() { m_contents.reset(); }

    void whereThereIsRoomNothingScrolls()
    {
        for (const QSize& more : {QSize(0, 0), QSize(200, 100)}) {
            resize(m_contents->sizeHint() + more);
            QCOMPARE(body().verticalScrollBar()->maximum(), 0);
            QCOMPARE(body().horizontalScrollBar()->maximum(), 0);
            for (const QLineEdit* field : m_fields)
                QVERIFY(isInView(*field));
            QVERIFY(m_fields.constFirst()->width() >= 300 + more.width());
        }
        QVERIFY(m_contents->minimumSizeHint().height() <= m_contents->sizeHint().height());
        resize(m_contents->minimumSizeHint());
        QCOMPARE(body().verticalScrollBar()->maximum(), 0);
    }

    void whereThereIsLittleRoomTheControlsScrollAndTheButtonsStay()
    {
        resize({250, 160});
        QVERIFY(body().verticalScrollBar()->maximum() > 0);
        QVERIFY(body().horizontalScrollBar()->maximum() > 0);
        for (const QPushButton* button : {m_leading, m_ok, m_cancel})
            QVERIFY2(isInView(*button), qPrintable(button->text()));
        QVERIFY(!isInView(*m_fields.constLast()));
        body().verticalScrollBar()->setValue(body().verticalScrollBar()->maximum());
        QVERIFY(place(*m_fields.constLast()).bottom() < place(*m_ok).top());
        QCOMPARE(body().focusPolicy(), Qt::NoFocus); // its fields have the keyboard
    }

    void whatGetsTheKeyboardComesIntoView()
    {
        resize({400, 160});
        m_contents->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_contents.get()));
        m_ok->setFocus();
        QVERIFY(!isInView(*m_fields.constLast()));
        m_fields.constLast()->setFocus();
        QVERIFY(isInView(*m_fields.constLast()));
        m_fields.constFirst()->setFocus();
        QVERIFY(isInView(*m_fields.constFirst()));
    }

    void buttonsStandAtTheRightAndWhatLeadsThemAtTheLeft()
    {
        resize({600, 500});
        QCOMPARE(place(*m_leading).left(), place(*m_fields.constFirst()).left());
        QCOMPARE(place(*m_cancel).right(), place(*m_fields.constFirst()).right());
        QVERIFY(place(*m_ok).right() < place(*m_cancel).left());
        QCOMPARE(place(*m_ok).top(), place(*m_leading).top());
    }

    void buttonsThatDoNotFitStandBelowEachOther()
    {
        const int widest = m_leading->sizeHint().width();
        resize({widest + 30, 300});
        QVERIFY(place(*m_ok).top() > place(*m_leading).bottom());
        for (const QPushButton* button : {m_leading, m_ok, m_cancel}) {
            QVERIFY2(isInView(*button), qPrintable(button->text()));
            QVERIFY(button->width() >= button->minimumSizeHint().width());
        }
    }

    void whereThereIsHardlyAnyRoomAllOfItScrolls()
    {
        resize({300, 60});
        QVERIFY(m_contents->verticalScrollBar()->maximum() > 0);
        m_contents->bringIntoView(*m_cancel);
        QVERIFY(isInView(*m_cancel));
    }

    void textsWithoutAnythingForTheKeyboardScrollByIt()
    {
        auto* texts = new QWidget;
        auto* rows = new QVBoxLayout(texts);
        for (int number = 0; number < 10; ++number)
            rows->addWidget(new QLabel(u"説明"_s));
        ScrolledArea area(texts, ScrolledArea::Least::Content);
        area.show();
        area.resize({100, 60});
        QCoreApplication::processEvents();
        QCOMPARE(area.focusPolicy(), Qt::StrongFocus);
        QTest::keyClick(&area, Qt::Key_Down);
        QVERIFY(area.verticalScrollBar()->value() > 0);
        area.resize(area.sizeHint());
        QCoreApplication::processEvents();
        QCOMPARE(area.focusPolicy(), Qt::NoFocus);
    }

    void controlsThatAppearLaterFindTheirRoom()
    {
        const int before = m_contents->minimumSizeHint().height();
        auto* further = new QLineEdit;
        further->hide();
        m_fields.constFirst()->parentWidget()->layout()->addWidget(further);
        QCoreApplication::processEvents();
        QCOMPARE(m_contents->minimumSizeHint().height(), before);
        further->show();
        QCoreApplication::processEvents();
        QVERIFY(m_contents->minimumSizeHint().height() > before);
        resize({400, 200});
        body().bringIntoView(*further);
        QVERIFY(isInView(*further));
    }
};

QTEST_MAIN(TestWindowContents)
#include "test_window_contents.moc"
