#include "files.h"
#include "log_capture.h"
#include "log_line.h"
#include "plugin_static_function.h"
#include "test_main.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

class tst_log_capture : public QObject
{
    Q_OBJECT

private slots:
    void captures_the_lines_without_their_time();
    void gives_the_messages_alone();
    void names_the_edition_it_was_made_with_data();
    void names_the_edition_it_was_made_with();
    void captures_after_a_reset_through_its_record();
    void keeps_a_line_feed_inside_a_message();
    void shows_a_line_without_a_valid_time_stamp_data();
    void shows_a_line_without_a_valid_time_stamp();
    void forgets_the_lines_on_clear();
    void puts_the_run_context_back();
    void removes_its_file();
};

void tst_log_capture::captures_the_lines_without_their_time()
{
    const log_capture log;
    QCOMPARE(log.lines(), QStringList());
    plugin_static_function::app_debug(u"[walk] - START"_s, u"void registry::walk(int)"_s);
    plugin_static_function::app_debug(u""_s, u"bool ns::end()"_s);
    QCOMPARE(log.lines(), (QStringList{log_line(u"registry::walk"_s, u"[walk] - START"_s),
                                       log_line(u"ns::end"_s, {})}));
}

void tst_log_capture::gives_the_messages_alone()
{
    const log_capture log;
    plugin_static_function::app_debug(u" table"_s + message_mark + u"creation "_s,
                                      u"void a::b()"_s);
    QCOMPARE(log.messages(), QStringList{u" table"_s + message_mark + u"creation "_s});
}

void tst_log_capture::names_the_edition_it_was_made_with_data()
{
    QTest::addColumn<int>("engine_type");
    QTest::addColumn<QString>("edition");
    QTest::addRow("sweep") << 1 << u"ARKEN_SWEEP"_s;
    QTest::addRow("field") << 2 << u"ARKEN_FIELD"_s;
    QTest::addRow("an unknown edition") << 7 << u" -----FAILED----- to find Engine Type ][7"_s;
}

void tst_log_capture::names_the_edition_it_was_made_with()
{
    QFETCH(const int, engine_type);
    QFETCH(const QString, edition);
    const log_capture log(engine_type);
    plugin_static_function::app_debug(u"m"_s, u"void a::b()"_s);
    QCOMPARE(log.lines(), QStringList{log_line(u"a::b"_s, u"m"_s, edition)});
}

void tst_log_capture::captures_after_a_reset_through_its_record()
{
    const log_capture log;
    plugin_static_function::set_essentials();
    plugin_static_function::app_debug(u"lost"_s, u"void a::b()"_s);
    plugin_static_function::set_general_info(log.general_info());
    plugin_static_function::app_debug(u"kept"_s, u"void a::b()"_s);
    QCOMPARE(log.messages(), QStringList{u"kept"_s});
}

void tst_log_capture::keeps_a_line_feed_inside_a_message()
{
    const log_capture log;
    plugin_static_function::app_debug(u"one\ntwo\n"_s, u"void a::b()"_s);
    plugin_static_function::app_debug(u"three"_s, u"void a::b()"_s);
    QCOMPARE(log.messages(), (QStringList{u"one\ntwo\n"_s, u"three"_s}));
}

void tst_log_capture::shows_a_line_without_a_valid_time_stamp_data()
{
    QTest::addColumn<QString>("line");
    const QString rest = log_line(u"x"_s, u"m"_s);
    QTest::addRow("no stamp") << u"stray"_s;
    QTest::addRow("a month in digits") << u"[2024-03-07T09-05-41]"_s + rest;
    QTest::addRow("no bracket behind the stamp") << u"[2024-Mar-07T09-05-41]"_s + rest.mid(1);
    QTest::addRow("colons in the time") << u"[2024-Mar-07T09:05:41]"_s + rest;
}

void tst_log_capture::shows_a_line_without_a_valid_time_stamp()
{
    QFETCH(const QString, line);
    const log_capture log;
    write_file(log.path(), line.toUtf8() + '\n');
    QCOMPARE(log.lines(), QStringList{line});
    const QString before = log_line(u"x"_s, u"m\n"_s);
    write_file(log.path(), "[2024-Mar-07T09-05-41]" + (before + line).toUtf8());
    QCOMPARE(log.lines(), QStringList{before + line + u"<no line feed>"_s});
}

void tst_log_capture::forgets_the_lines_on_clear()
{
    const log_capture log;
    plugin_static_function::app_debug(u"before"_s, u"void a::b()"_s);
    log.clear();
    plugin_static_function::app_debug(u"after"_s, u"void a::b()"_s);
    QCOMPARE(log.messages(), QStringList{u"after"_s});
}

void tst_log_capture::puts_the_run_context_back()
{
    using context = plugin_static_function;
    context::set_essentials();
    context::set_source_count(5);
    context::debug_file_path = u"/some/where"_s;
    context::system_account_QStringList = {{u"ann"_s, {}}};
    {
        const log_capture log;
        context::set_source_count(9);
        context::set_cancel_extraction(true);
        context::system_account_QStringList.clear();
        QVERIFY(context::debug_mode_status_bool);
    }
    QCOMPARE(context::source_count_int, 5);
    QCOMPARE(context::debug_file_path, u"/some/where"_s);
    QCOMPARE(context::type_engine_int, -1);
    QCOMPARE(context::system_account_QStringList.size(), 1);
    QVERIFY(!context::bool_cancel_extraction);
    QVERIFY(!context::debug_mode_status_bool);
    QVERIFY(!context::debug_print_in_file_bool);
}

void tst_log_capture::removes_its_file()
{
    QString path;
    {
        const log_capture log;
        path = log.path();
        QVERIFY(QFileInfo::exists(path));
    }
    QVERIFY(!QFileInfo::exists(path));
}

TEST_MAIN(tst_log_capture)
#include "tst_log_capture.moc"
