#include "ui/widgets/read_only_text.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;

/// Fields that assistive technology reads but must not change.
class TestReadOnlyText : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    QLineEdit* m_line = nullptr;
    ShownText* m_document = nullptr;

    static QAccessibleInterface* interfaceOf(QWidget* field)
    {
        return QAccessible::queryAccessibleInterface(field);
    }

private Q_SLOTS:
    void init()
    {
        keepReadOnlyFieldsFromOutside();
        m_window = std::make_unique<QWidget>();
        auto* layout = new QVBoxLayout(m_window.get());
        m_line = new QLineEdit(u"M-991231-001"_s);
        m_line->setReadOnly(true);
        auto* label = new QLabel(u"ID :"_s);
        label->setBuddy(m_line);
        m_document = new ShownText;
        m_document->setPlainText(u"一行目\n二行目"_s);
        layout->addWidget(label);
        layout->addWidget(m_line);
        layout->addWidget(m_document);
        m_window->show();
    }
    void cleanup() { m_window.reset(); }

    void aReadOnlyFieldIsReadAndNotChanged_data()
    {
        QTest::addColumn<bool>("manyLines");
        QTest::newRow("one line") << false;
        QTest::newRow("many lines") << true;
    }
    void aReadOnlyFieldIsReadAndNotChanged()
    {
        QFETCH(bool, manyLines);
        QWidget* field = manyLines ? static_cast<QWidget*>(m_document) : m_line;
        QAccessibleInterface* iface = interfaceOf(field);
        QVERIFY(iface->state().readOnly);
        QVERIFY(!iface->state().editable);
        QCOMPARE(bool(iface->state().multiLine), manyLines);
        QVERIFY(iface->editableTextInterface() == nullptr);
        const QString text = iface->text(QAccessible::Value);
        QCOMPARE(text, manyLines ? u"一行目\n二行目"_s : u"M-991231-001"_s);
        iface->setText(QAccessible::Value, u"別"_s);
        QCOMPARE(iface->text(QAccessible::Value), text);
        QAccessibleTextInterface* reading = iface->textInterface();
        QVERIFY(reading != nullptr);
        QCOMPARE(reading->characterCount(), int(text.size()));
        QCOMPARE(reading->text(0, reading->characterCount()), text);
        QCOMPARE(reading->text(2, 4), text.mid(2, 2));
    }

    void placesAndSelectionsAreKept_data() { aReadOnlyFieldIsReadAndNotChanged_data(); }
    void placesAndSelectionsAreKept()
    {
        QFETCH(bool, manyLines);
        QAccessibleTextInterface* text =
            interfaceOf(manyLines ? static_cast<QWidget*>(m_document) : m_line)->textInterface();
        QCOMPARE(text->selectionCount(), 0);
        text->setCursorPosition(2);
        QCOMPARE(text->cursorPosition(), 2);
        text->addSelection(1, 3);
        int start = -1;
        int end = -1;
        text->selection(0, &start, &end);
        QCOMPARE(std::pair(start, end), std::pair(1, 3));
        QCOMPARE(text->selectionCount(), 1);
        text->removeSelection(0);
        QCOMPARE(text->selectionCount(), 0);
        text->setCursorPosition(1000);
        QCOMPARE(text->cursorPosition(), text->characterCount());
        const QRect third = text->characterRect(2);
        QVERIFY(third.left() > text->characterRect(1).left());
        QCOMPARE(text->offsetAtPoint(QPoint(third.left() + 1, third.center().y())), 2);
    }

    void theLabelIsTheName() { QCOMPARE(interfaceOf(m_line)->text(QAccessible::Name), u"ID :"_s); }

    void aFieldThatCanBeChangedStaysSo()
    {
        QLineEdit field;
        QVERIFY(interfaceOf(&field)->editableTextInterface() != nullptr);
        QPlainTextEdit document;
        QVERIFY(interfaceOf(&document)->editableTextInterface() != nullptr);
    }
};

QTEST_MAIN(TestReadOnlyText)
#include "test_read_only_text.moc"
