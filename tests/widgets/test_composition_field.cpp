#include "tests/support/scripted_dialogs.h"
#include "tests/support/test_ports.h"
#include "tests/widgets/report_list_fixture.h"
#include "ui/widgets/composition_field.h"
#include "ui/widgets/keyed_tree.h"
#include "ui/widgets/persons_input.h"

#include <QInputMethodEvent>
#include <QLabel>
#include <QVBoxLayout>
#include <QtTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::testing;

/// Typing with an input method in a list and in a tree, to find a row.
class TestCompositionField : public ReportListFixture
{
    Q_OBJECT

private:
    static void bothViews()
    {
        QTest::addColumn<bool>("tree");
        QTest::newRow("list") << false;
        QTest::newRow("tree") << true;
    }
    QAbstractItemView& view() const
    {
        QFETCH(bool, tree);
        return tree ? static_cast<QAbstractItemView&>(*m_tree) : *m_list;
    }
    static QLabel& shown(const QAbstractItemView& view) { return *view.findChild<QLabel*>(u"composition"_s); }
    static void send(QAbstractItemView& view, const QString& preedit, const QString& committed = {})
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(committed);
        QCoreApplication::sendEvent(&view, &event);
    }
    static QString current(const QAbstractItemView& view) { return view.currentIndex().data().toString(); }

    KeyedTree* m_tree = nullptr;

private Q_SLOTS:
    void init()
    {
        PersonsInput::ofApplication();
        makeList();
        m_list->rows().clear();
        fill(*m_list, {u"氷"_s, u"水"_s, u"湯"_s});
        m_tree = new KeyedTree;
        m_window->layout()->addWidget(m_tree);
        {
            KeyedTreeModel& nodes = m_tree->nodes();
            for (const QString& name : {u"氷"_s, u"水"_s, u"湯"_s})
                nodes.add(QString(), name, name);
        }
        m_tree->show();
        QFETCH(bool, tree);
        Q_UNUSED(tree)
        view().setFocus();
        view().setCurrentIndex(view().model()->index(0, 0));
    }
    void cleanup() { m_window.reset(); }

    void whatIsComposedIsShownAtTheRow_data() { bothViews(); }

    void whatIsComposedIsShownAtTheRow()
    {
        QVERIFY(shown(view()).isHidden());
        view().setCurrentIndex(view().model()->index(1, 0));
        send(view(), u"みず"_s);
        QVERIFY(shown(view()).isVisible());
        QCOMPARE(shown(view()).text(), u"みず"_s);
        const QRect row = view().visualRect(view().currentIndex());
        QCOMPARE(shown(view()).geometry().top(), row.top());
        QVERIFY(view().viewport()->rect().contains(shown(view()).geometry()));
        QVERIFY(shown(view()).width() >= shown(view()).sizeHint().width());
        send(view(), {}, u"湯"_s);
        QVERIFY(shown(view()).isHidden());
        QCOMPARE(current(view()), u"湯"_s);
    }

    void whatIsTakenBackIsGone_data() { bothViews(); }

    void whatIsTakenBackIsGone()
    {
        send(view(), u"みず"_s);
        send(view(), {});
        QVERIFY(shown(view()).isHidden());
        QCOMPARE(current(view()), u"氷"_s);
    }

    void theFocusTakesItAlongAndNoRowWithIt_data() { bothViews(); }

    void theFocusTakesItAlongAndNoRowWithIt()
    {
        QTRY_VERIFY(view().hasFocus());
        send(view(), u"水"_s);
        m_other->setFocus();
        QVERIFY(shown(view()).isHidden());
        QCOMPARE(current(view()), u"氷"_s); // a command is meant for the row that is selected
    }

    void commandsDropIt_data() { bothViews(); }

    void commandsDropIt()
    {
        send(view(), u"水"_s);
        PersonsInput::ofApplication().composition().confirm();
        QVERIFY(shown(view()).isHidden());
        QCOMPARE(current(view()), u"氷"_s);
    }

    void blankOfTheInputMethodIsTheSpaceBar_data() { bothViews(); }

    void blankOfTheInputMethodIsTheSpaceBar()
    {
        for (const QString& blank : {u"\u3000"_s, u" "_s}) {
            view().selectionModel()->clearSelection();
            send(view(), {}, blank);
            QVERIFY(view().selectionModel()->isSelected(view().currentIndex()));
            QCOMPARE(current(view()), u"氷"_s);
        }
    }

    void blankThatEndsACompositionIsNoKey_data() { bothViews(); }

    void blankThatEndsACompositionIsNoKey()
    {
        view().selectionModel()->clearSelection();
        send(view(), u"　"_s);
        send(view(), {}, u"　"_s);
        QVERIFY(!view().selectionModel()->hasSelection());
    }

    void longOnesStayInTheView_data() { bothViews(); }

    void longOnesStayInTheView()
    {
        send(view(), QString(500, u'水'));
        QVERIFY(view().viewport()->rect().contains(shown(view()).geometry()));
    }

    void viewWithoutRowsShowsItToo_data() { bothViews(); }

    void viewWithoutRowsShowsItToo()
    {
        m_list->rows().clear();
        m_tree->nodes().clear();
        send(view(), u"みず"_s);
        QVERIFY(shown(view()).isVisible());
        QCOMPARE(shown(view()).pos(), QPoint(0, 0));
    }
};

QTEST_MAIN(TestCompositionField)
#include "test_composition_field.moc"
