#include "application_keys.h"
#include "extraction_options.h"
#include "host_double.h"
#include "log_capture.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "windows_installed_applications.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// What a host may ask for, and what becomes of wrong requests.
class tst_extraction_options_parsing : public QObject
{
    Q_OBJECT

private slots:
    void are_read_from_a_map_data();
    void are_read_from_a_map();
    void ignore_wrong_entries_data();
    void ignore_wrong_entries();
    void lead_to_copies();
    void are_told_of_once_in_a_run();
    void are_left_alone_by_the_plug_in();
    void change_nothing_where_none_is_needed_data();
    void change_nothing_where_none_is_needed();
};

namespace {

const QVariantMap all_options = {{u"ignore_letter_case"_s, true},
                                 {u"decode_by_type"_s, true},
                                 {u"installations_of_users"_s, true},
                                 {u"keep_hives_open"_s, true},
                                 {u"old_layout"_s, true},
                                 {u"hive_copies"_s, QVariantMap{{u"/none"_s, u"/copy"_s}}}};

/// Every row of every table, as texts.
QList<QStringList> all_rows(const QString &database_path)
{
    QList<QStringList> rows;
    for (const QString &table : all_tabs())
        rows += result_database(database_path).rows(table, {u"*"_s});
    return rows;
}

} // namespace

void tst_extraction_options_parsing::are_read_from_a_map_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QList<bool>>("options");
    const auto row = [](const char *name, const QVariant &property, const QList<bool> &options) {
        QTest::newRow(name) << property << options;
    };
    row("nothing", {}, {false, false, false, false, false});
    row("an empty map", QVariantMap(), {false, false, false, false, false});
    row("letter case", QVariantMap{{u"ignore_letter_case"_s, true}},
        {true, false, false, false, false});
    row("decoding", QVariantMap{{u"decode_by_type"_s, true}}, {false, true, false, false, false});
    row("installations", QVariantMap{{u"installations_of_users"_s, true}},
        {false, false, true, false, false});
    row("kept hives", QVariantMap{{u"keep_hives_open"_s, true}},
        {false, false, false, false, true});
    row("the old layout", QVariantMap{{u"old_layout"_s, true}}, {false, false, false, true, false});
    row("all", all_options, {true, true, true, true, true});
    row("one taken back", QVariantMap{{u"old_layout"_s, false}},
        {false, false, false, false, false});
}

void tst_extraction_options_parsing::are_read_from_a_map()
{
    QFETCH(const QVariant, property);
    const parsed_options read = extraction_options_from(property);
    const extraction_options &options = read.options;
    QTEST(
        (QList<bool>{options.ignore_letter_case, options.decode_by_type,
                     options.installations_of_users, options.old_layout, options.keep_hives_open}),
        "options");
    QCOMPARE(read.ignored, QStringList());
}

void tst_extraction_options_parsing::ignore_wrong_entries_data()
{
    QTest::addColumn<QVariant>("property");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QVariant &property, const QString &text) {
        QTest::newRow(name) << property << text;
    };
    row("no map", u"old_layout"_s, u"the options are no map and are ignored"_s);
    row("an unknown key", QVariantMap{{u"fast"_s, true}},
        u"fast is no known option and is ignored"_s);
    row("a key in other letters", QVariantMap{{u"Old_Layout"_s, true}},
        u"Old_Layout is no known option and is ignored"_s);
    row("a number", QVariantMap{{u"old_layout"_s, 1}}, u"old_layout is no bool and is ignored"_s);
    row("a text", QVariantMap{{u"decode_by_type"_s, u"true"_s}},
        u"decode_by_type is no bool and is ignored"_s);
    row("copies that are no map", QVariantMap{{u"hive_copies"_s, u"/copy"_s}},
        u"hive_copies is no map of texts and is ignored"_s);
    row("a copy that is no text", QVariantMap{{u"hive_copies"_s, QVariantMap{{u"/a"_s, 7}}}},
        u"the copy of /a is no text and is ignored"_s);
    row("a key that would forge a line", QVariantMap{{u"a\nb\u2028c"_s, true}},
        u"a?b?c is no known option and is ignored"_s);
}

void tst_extraction_options_parsing::ignore_wrong_entries()
{
    QFETCH(const QVariant, property);
    const parsed_options read = extraction_options_from(property);
    QFETCH(const QString, text);
    QCOMPARE(read.ignored, QStringList{text});
    QVERIFY(!read.options.old_layout && !read.options.decode_by_type);
    QVERIFY(read.options.hive_copies.isEmpty());
}

void tst_extraction_options_parsing::lead_to_copies()
{
    extraction_options options;
    QCOMPARE(options.file_to_read(u"/v//SOFTWARE"_s), u"/v//SOFTWARE"_s);
    options = extraction_options_from(
                  QVariantMap{{u"hive_copies"_s,
                               QVariantMap{{u"/v/./a"_s, u"/v/b"_s}, {u"/v/b"_s, u"/v/c"_s}}}})
                  .options;
    QCOMPARE(options.file_to_read(u"/v/a"_s), u"/v/b"_s);
    QCOMPARE(options.file_to_read(u"/v//a"_s), u"/v/b"_s);
    QCOMPARE(options.file_to_read(u"/v/A"_s), u"/v/A"_s);
}

void tst_extraction_options_parsing::are_told_of_once_in_a_run()
{
    const evidence_volume volume;
    const log_capture log;
    host_double host(volume);
    host.settings.general = log.general_info();
    host.plugin().setProperty("extraction_options", QVariantMap{{u"fast"_s, true}});
    for (int run = 1; run <= 2; ++run) {
        host.run();
        host.extract();
        QCOMPARE(
            log.messages().count(u"[extraction_options] fast is no known option and is ignored"_s),
            run);
    }
}

void tst_extraction_options_parsing::are_left_alone_by_the_plug_in()
{
    const evidence_volume volume;
    host_double host(volume);
    host.plugin().setProperty("extraction_options", all_options);
    host.run();
    host.plugin().pub_set_essentials();
    QCOMPARE(host.plugin().property("extraction_options").toMap(), all_options);
}

void tst_extraction_options_parsing::change_nothing_where_none_is_needed_data()
{
    QTest::addColumn<QVariantMap>("options");
    for (auto option = all_options.cbegin(); option != all_options.cend(); ++option)
        QTest::newRow(qUtf8Printable(option.key())) << QVariantMap{{option.key(), option.value()}};
    QTest::newRow("all") << all_options;
}

// Evidence in ASCII, spelt and laid out as hosts have always expected it.
void tst_extraction_options_parsing::change_nothing_where_none_is_needed()
{
    QFETCH(const QVariantMap, options);
    evidence_volume volume;
    add_sample_evidence(volume);
    volume.system();
    volume.write();
    const auto story = [&](const QVariant &property) {
        const log_capture log;
        host_double host(volume);
        host.settings.general = log.general_info();
        host.plugin().setProperty("extraction_options", property);
        host.run();
        const QStringList messages =
            log.messages().replaceInStrings(host.settings.result_folder, QString());
        return std::make_tuple(all_rows(host.database_path()), host.events(), messages);
    };
    QCOMPARE(story(options), story({}));
}

TEST_MAIN(tst_extraction_options_parsing)
#include "tst_extraction_options_parsing.moc"
