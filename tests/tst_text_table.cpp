#include "made_columns.h"
#include "test_main.h"
#include "text_table.h"
#include "text_width.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace results;

// Texts in columns of a terminal.
class tst_text_table : public QObject
{
    Q_OBJECT

private slots:
    void widths_data();
    void widths();
    void cuts_data();
    void cuts();
    void rows_stand_side_by_side();
    void long_cells_are_cut_so_that_lines_fit();
    void too_many_columns_become_a_list();
    void hostile_cells_are_escaped();
    void a_source_without_rows_says_so();
    void stops_when_nobody_reads();
};

namespace {

/// A table of texts; the second column is one of numbers.
QByteArray table_of(const QList<QStringList> &rows, int width)
{
    QList<column> columns;
    for (qsizetype i = 0; i < (rows.isEmpty() ? 1 : rows.first().size()); ++i)
        columns.append(made_column(u"column%1"_s.arg(i), {},
                                   i == 1 ? column_kind::number : column_kind::text));
    std::vector<row> made;
    for (const QStringList &texts : rows) {
        row each;
        for (const QString &text : texts) {
            each.cells.emplace_back();
            each.cells.back().set_text(text.toStdString());
        }
        made.push_back(each);
    }
    memory_rows source(u"name"_s, u"title"_s, columns, std::move(made));
    QByteArray output;
    text_table table(
        [&output](std::string_view text) {
            output.append(text.data(), qsizetype(text.size()));
            return true;
        },
        width);
    QList<int> places;
    for (int i = 0; i < int(columns.size()); ++i)
        places.append(i);
    table.begin(source, places);
    while (const row *each = source.next())
        table.write(*each);
    table.finish();
    return output;
}

} // namespace

void tst_text_table::widths_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::newRow("empty") << QString() << 0;
    QTest::newRow("Latin") << u"Büro"_s << 4;
    QTest::newRow("combining") << u"e\u0301a"_s << 2;
    QTest::newRow("Chinese") << u"会計"_s << 4;
    QTest::newRow("Hangul, composed of letters") << u"\u1112\u1161\u11ab"_s << 2;
    QTest::newRow("half-width") << u"ｱｲ"_s << 2;
    QTest::newRow("full-width") << u"ＡＢ"_s << 4;
    QTest::newRow("emoji") << u"😀"_s << 2;
    QTest::newRow("Arabic with marks") << u"\u0628\u064e"_s << 1;
}

void tst_text_table::widths()
{
    QFETCH(const QString, text);
    QTEST(width_of(std::string_view(text.toStdString())), "width");
}

void tst_text_table::cuts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("cut");
    QTest::newRow("fits") << u"abcd"_s << 4 << u"abcd"_s;
    QTest::newRow("too long") << u"abcde"_s << 4 << u"abc…"_s;
    QTest::newRow("half of a wide character") << u"会計会"_s << 4 << u"会…"_s;
    QTest::newRow("wide characters fit") << u"会計"_s << 4 << u"会計"_s;
    QTest::newRow("mark at the cut") << u"abce\u0301f"_s << 4 << u"abc…"_s;
    QTest::newRow("mark before the cut") << u"ae\u0301bcd"_s << 4 << u"ae\u0301b…"_s;
}

void tst_text_table::cuts()
{
    QFETCH(const QString, text);
    QFETCH(const int, width);
    QTEST(QString::fromStdString(cut_to_width(text.toStdString(), width)), "cut");
}

void tst_text_table::rows_stand_side_by_side()
{
    QCOMPARE(table_of({{u"会計"_s, u"7"_s}, {u"a"_s, u"1234567890"_s}}, 0),
             QByteArray("name: title\n"
                        "column0     column1\n"
                        "-------  ----------\n"
                        "会計              7\n"
                        "a        1234567890\n"
                        "(2 rows)\n"));
}

void tst_text_table::long_cells_are_cut_so_that_lines_fit()
{
    const QByteArray table = table_of({{QString(60, u'a'), u"1"_s, QString(60, u'会')}}, 50);
    for (const QByteArray &line : table.split('\n'))
        QVERIFY(width_of(std::string_view(line.constData(), size_t(line.size()))) <= 50);
    QVERIFY(table.contains("aaaa…"));
    QVERIFY(table_of({{QString(8'000'000, u'a')}}, 0).contains(QByteArray(99, 'a') + "…\n"));
    QVERIFY(table_of({{QString(1000, u'ä')}}, 0).contains("ä…\n"));
}

void tst_text_table::too_many_columns_become_a_list()
{
    QCOMPARE(table_of({{u"aaaaaaaaaaaa"_s, u"1"_s, QString()}}, 20),
             QByteArray("name: title\n"
                        "--\n"
                        "column0: aaaaaaaaaa…\n"
                        "column1: 1\n"
                        "(1 row)\n"));
}

void tst_text_table::hostile_cells_are_escaped()
{
    QVERIFY(table_of({{u"\x1b[2J\r\nname\u202e\u0085"_s}}, 0)
                .contains("\n\\x1b[2J\\x0d\\x0aname\\u202e\\x85\n"));
}

void tst_text_table::a_source_without_rows_says_so()
{
    QCOMPARE(table_of({}, 80), QByteArray("name: title\nno rows\n"));
}

void tst_text_table::stops_when_nobody_reads()
{
    std::vector<row> many(20'000);
    for (row &each : many) {
        each.cells.resize(1);
        each.cells[0].set_text(std::string(90, 'a'));
    }
    memory_rows source(u"name"_s, {}, {made_column(u"a"_s, {})}, std::move(many));
    text_table table([](std::string_view) { return false; }, 0);
    bool is_taken = table.begin(source, {0});
    int written = 0;
    while (is_taken) {
        const row *each = source.next();
        QVERIFY2(each != nullptr, "all rows were read");
        is_taken = table.write(*each);
        ++written;
    }
    QVERIFY(written < 20'000);
}

TEST_MAIN(tst_text_table)
#include "tst_text_table.moc"
