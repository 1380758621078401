// The neighbourhood of a datum as a picture.
#include "exchange/picture.h"
#include "exchange/refused.h"
#include "store/record_set.h"
#include "tests/exchange/folder_content.h"
#include "tests/exchange/report_texts.h"
#include "tests/support/compare_text.h"
#include "tests/support/test_world.h"

#include <QTest>
#include <QXmlStreamReader>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using namespace quillon;
using namespace quillon::exchange;
using namespace quillon::testing;

class TestPicture : public QObject
{
    Q_OBJECT

    std::unique_ptr<TestWorld> world;
    ExportReport report;

    struct Seen {
        QStringList texts;
        QStringList fills;
        qsizetype paths = 0;
        QList<QRectF> boxes;
    };

    static QString identifier(int number) { return u"M-991231-%1"_s.arg(number, 3, 10, QChar(u'0')); }
    void add(int number, const QString& name)
    {
        TestWorld::addRow(world->session.RsMain, {name, identifier(number), u"-"_s});
    }
    void link(int from, int to)
    {
        TestWorld::addRow(world->session.RsLink, {identifier(from), identifier(to)});
    }
    QByteArray draw(const QString& of)
    {
        const QString path = world->folder.filePath(u"図.svg"_s);
        QFile::remove(path);
        report = exportPicture(world->session, path, of);
        return contentBelow(world->folder.path())[u"図.svg"_s];
    }
    /// What there is in a picture. Fails when it is no XML.
    static Seen lookAt(const QByteArray& svg)
    {
        Seen seen;
        QXmlStreamReader xml(svg);
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement)
                continue;
            const auto value = [&](const char16_t* name) {
                return xml.attributes().value(QString::fromUtf16(name));
            };
            if (xml.name() == u"text") {
                seen.texts << xml.readElementText();
            } else if (xml.name() == u"path") {
                ++seen.paths;
            } else if (xml.name() == u"rect" && !value(u"rx").isEmpty()) {
                seen.fills << value(u"fill").toString();
                seen.boxes << QRectF(value(u"x").toDouble(), value(u"y").toDouble(),
                                     value(u"width").toDouble(), value(u"height").toDouble());
            }
        }
        if (xml.hasError())
            qFatal("no picture");
        return seen;
    }

private Q_SLOTS:
    void init()
    {
        world = std::make_unique<TestWorld>();
        world->openDatabase(world->createDatabase());
        for (int i = 1; i <= 6; ++i)
            add(i, u"項目 %1"_s.arg(i));
        link(1, 2);
        link(3, 1);
        link(2, 4);
        link(2, 3);
        link(4, 5);
        link(1, 1);
    }

    void cleanup()
    {
        QCOMPARE(world->dialogs.takeComplaints(), QStringList());
        world.reset();
    }

    void whatIsWithinTwoStepsIsDrawn()
    {
        const Seen seen = lookAt(draw(identifier(1)));
        QCOMPARE(seen.texts, QStringList({u"項目 1"_s, u"項目 2"_s, u"項目 3"_s, u"項目 4"_s}));
        QCOMPARE(seen.paths, 4); // 1-2, 1-3, 2-3, 2-4
        QCOMPARE(report.written, 4);
        QVERIFY(seen.boxes[0].left() < seen.boxes[1].left());
        QCOMPARE(seen.boxes[1].left(), seen.boxes[2].left());
        QVERIFY(seen.boxes[2].left() < seen.boxes[3].left());
    }

    void noBoxCoversAnother()
    {
        for (int i = 7; i < 90; ++i) {
            add(i, QString(i % 50 + 1, u'水'));
            link(i, i % 3 + 1);
        }
        const Seen seen = lookAt(draw(identifier(1)));
        QVERIFY(seen.boxes.size() > 80);
        for (qsizetype i = 0; i < seen.boxes.size(); ++i) {
            for (qsizetype j = 0; j < i; ++j)
                QVERIFY(!seen.boxes[i].intersects(seen.boxes[j]));
        }
        QVERIFY(seen.texts.contains(QString(12, u'水') + u"…"_s)); // the end of a long name
    }

    void categoriesAreToldByTheirColours()
    {
        TestWorld::addRow(world->session.RsCategoryID, {u"A"_s, u"自然 <1>"_s});
        TestWorld::addRow(world->session.RsCategoryID, {u"A-A"_s, u"地形"_s});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, identifier(1)});
        TestWorld::addRow(world->session.RsCategory, {u"A"_s, identifier(3)});
        TestWorld::addRow(world->session.RsCategory, {u"A-A"_s, identifier(2)});
        const Seen seen = lookAt(draw(identifier(1)));
        QCOMPARE(seen.fills[0], seen.fills[2]);
        QVERIFY(seen.fills[0] != seen.fills[1]);
        QCOMPARE(seen.fills[3], u"#ffffff"_s);
        QCOMPARE(seen.texts.last(2), QStringList({u"自然 <1>"_s, u"自然 <1> › 地形"_s}));
    }

    void sameDataMakeTheSamePicture() { QCOMPARE(draw(identifier(1)), draw(identifier(1))); }

    void tooManyAreCountedAndTold()
    {
        for (int i = 7; i < 100; ++i) {
            add(i, u"n"_s);
            link(1, i);
        }
        const Seen seen = lookAt(draw(identifier(1)));
        QCOMPARE(seen.texts.last(), u"ほか 35 件"_s);
        QVERIFY(compareText(textsOf(report), u"M-991231-001: 多すぎるため、35 件を図に描きませんでした。"_s));
    }

    void datumWithoutLinksStandsAlone()
    {
        QCOMPARE(lookAt(draw(identifier(6))).texts, QStringList(u"項目 6"_s));
    }

    void whatIsNotThereIsRefused()
    {
        try {
            draw(u"M-000000-000"_s);
            QFAIL("it is there");
        } catch (const Refused& refused) {
            QVERIFY(compareText(refused.description, u"識別符号 M-000000-000 のデータはありません。"_s));
        }
        QVERIFY(!contentBelow(world->folder.path()).contains(u"図.svg"_s));
    }

    void everyDatumWithLinksHasItsPicture()
    {
        const QString folder = world->folder.filePath(u"図"_s);
        QCOMPARE(exportPictures(world->session, folder).written, 5);
        const auto content = contentBelow(folder);
        QCOMPARE(content.size(), 5);
        QCOMPARE(content[u"M-991231-001 項目 1.svg"_s], draw(identifier(1)));
    }
};

QTEST_GUILESS_MAIN(TestPicture)
#include "test_picture.moc"
