#include "files.h"
#include "local_zone.h"
#include "run_context_backup.h"
#include "test_main.h"

#include "plugin_static_function.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include <optional>

using namespace Qt::StringLiterals;

namespace {

using library = plugin_static_function;

const QString caller = u"virtual void windows_installed_applications::pub_extract_artifacts()"_s;
const QString message = u"[pub_extract_artifacts] - START"_s;
const QString shown_line =
    u"[ARKEN_DESK][Artifacts Extraction][windows_installed_applications::pub_extract_artifacts]:-- "
    "[pub_extract_artifacts] - START"_s;

// What came over the Qt debug channel, with the source that it names.
struct channel_message
{
    QString text;
    QString file;
    QString function;
};

QList<channel_message> channel_messages;

void keep_message(QtMsgType, const QMessageLogContext &context, const QString &text)
{
    channel_messages.append(
        {text, QString::fromLatin1(context.file), QString::fromLatin1(context.function)});
}

// Catches the Qt debug channel for as long as it lives.
class channel_capture
{
public:
    channel_capture() : previous_handler(qInstallMessageHandler(keep_message))
    {
        channel_messages.clear();
    }
    ~channel_capture() { qInstallMessageHandler(previous_handler); }
    Q_DISABLE_COPY_MOVE(channel_capture)

private:
    QtMessageHandler previous_handler;
};

QString without_time(const QString &line)
{
    static const QRegularExpression time(
        u"^\\[[0-9]{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-[0-9]{2}"
        "T[0-9]{2}-[0-9]{2}-[0-9]{2}\\](?=\\[)"_s);
    return QString(line).replace(time, QString());
}

void switch_log(bool on, bool terminal, bool file, const QString &path)
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info info;
    info.debug_mode_status = on;
    info.debug_print_on_terminal = terminal;
    info.debug_print_in_file = file;
    info.debug_file_path = path;
    library::set_general_info(info);
}

} // namespace

class tst_debug_log : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void outputs_follow_their_switches_data();
    void outputs_follow_their_switches();
    void function_info_is_reduced_to_the_qualified_name_data();
    void function_info_is_reduced_to_the_qualified_name();
    void engine_is_named_in_each_line_data();
    void engine_is_named_in_each_line();
    void terminal_line_names_its_source();
    void month_is_english_in_every_locale();
    void time_is_the_current_local_time();
    void file_keeps_what_it_held();
    void text_is_written_in_the_local_encoding();
    void absent_file_stays_absent_without_a_message();
    void file_that_does_not_open_is_reported_on_the_terminal();
    void essentials_reset_the_context();
    void essentials_keep_the_operating_system_versions();
    void setters_fill_the_context();
    void source_count_name_follows_the_count();
    void cleared_source_record_keeps_its_last_two_texts();
    void cleared_machine_record_is_empty();
    void cleared_general_record_keeps_its_fifth_flag();
    void instance_belongs_to_its_parent();

private:
    QString logged() const { return QString::fromLocal8Bit(evidence::read_file(log_path)); }
    QString log_path;
    std::optional<QTemporaryDir> folder;
    std::optional<test_support::run_context_backup> context;
};

void tst_debug_log::init()
{
    context.emplace();
    folder.emplace();
    log_path = folder->filePath(u"debug.log"_s);
    evidence::write_file(log_path, {});
    library::set_engine_type(0);
}

void tst_debug_log::cleanup()
{
    context.reset();
    folder.reset();
}

void tst_debug_log::outputs_follow_their_switches_data()
{
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("terminal");
    QTest::addColumn<bool>("file");
    QTest::addColumn<int>("terminal_lines");
    QTest::addColumn<int>("file_lines");
    QTest::newRow("switched off it writes nowhere") << false << true << true << 0 << 0;
    QTest::newRow("neither output is chosen") << true << false << false << 0 << 0;
    QTest::newRow("the terminal alone") << true << true << false << 1 << 0;
    QTest::newRow("the file alone") << true << false << true << 0 << 1;
    QTest::newRow("both outputs") << true << true << true << 1 << 1;
}

void tst_debug_log::outputs_follow_their_switches()
{
    QFETCH(const bool, on);
    QFETCH(const bool, terminal);
    QFETCH(const bool, file);
    QFETCH(const int, terminal_lines);
    QFETCH(const int, file_lines);
    switch_log(on, terminal, file, log_path);
    const channel_capture capture;
    library::app_debug(message, caller);
    QCOMPARE(channel_messages.size(), terminal_lines);
    if (terminal_lines > 0)
        QCOMPARE(without_time(channel_messages.first().text), shown_line);
    QCOMPARE(without_time(logged()), file_lines > 0 ? shown_line + u'\n' : QString());
}

void tst_debug_log::function_info_is_reduced_to_the_qualified_name_data()
{
    QTest::addColumn<QString>("function_info");
    QTest::addColumn<QString>("name");
    QTest::newRow("a static member")
        << u"static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"_s
        << u"plugin_static_function::execute_db_command_by_dbpath"_s;
    QTest::newRow("a constructor without a return type") << u"a::a(QWidget*)"_s << u"a::a"_s;
    QTest::newRow("blanks around it are cut") << u"  void a::b ( int )  "_s << u"a::b"_s;
    QTest::newRow("a tab before the name is cut") << u"void \ta::b(int)"_s << u"a::b"_s;
    QTest::newRow("the empty text")
        << QString() << u"FUNCTION INFO IS EMPTY ---FAILED--- debug!!!"_s;
    QTest::newRow("blanks alone") << u" \t "_s << u"FUNCTION INFO IS EMPTY ---FAILED--- debug!!!"_s;
    QTest::newRow("without a parenthesis the last character goes") << u"abc"_s << u"ab"_s;
    QTest::newRow("one character alone leaves nothing") << u"a"_s << QString();
    QTest::newRow("a parenthesis at the start leaves nothing") << u"(a)"_s << QString();
}

void tst_debug_log::function_info_is_reduced_to_the_qualified_name()
{
    QFETCH(const QString, function_info);
    QFETCH(const QString, name);
    switch_log(true, false, true, log_path);
    library::app_debug(message, function_info);
    QCOMPARE(without_time(logged()),
             u"[ARKEN_DESK][Artifacts Extraction]["_s + name + u"]:-- "_s + message + u'\n');
}

void tst_debug_log::engine_is_named_in_each_line_data()
{
    QTest::addColumn<int>("engine");
    QTest::addColumn<QString>("start");
    QTest::newRow("0 is the desk") << 0 << u"[ARKEN_DESK][Artifacts Extraction][a]:-- m\n"_s;
    QTest::newRow("1 is the sweep") << 1 << u"[ARKEN_SWEEP][Artifacts Extraction][a]:-- m\n"_s;
    QTest::newRow("2 is the field") << 2 << u"[ARKEN_FIELD][Artifacts Extraction][a]:-- m\n"_s;
    QTest::newRow("an unknown one is shown by its number")
        << 7 << u"[ -----FAILED----- to find Engine Type ][7][Artifacts Extraction][a]:-- m\n"_s;
    QTest::newRow("an unset one is shown as -1")
        << -1 << u"[ -----FAILED----- to find Engine Type ][-1][Artifacts Extraction][a]:-- m\n"_s;
}

void tst_debug_log::engine_is_named_in_each_line()
{
    QFETCH(const int, engine);
    QFETCH(const QString, start);
    switch_log(true, false, true, log_path);
    library::set_engine_type(engine);
    library::app_debug(u"m"_s, u"void a()"_s);
    QCOMPARE(without_time(logged()), start);
}

void tst_debug_log::terminal_line_names_its_source()
{
    switch_log(true, true, false, {});
    const channel_capture capture;
    library::app_debug(u"\"quoted\" \\ text"_s, caller);
    QCOMPARE(channel_messages.size(), 1);
    QVERIFY(channel_messages.first().text.endsWith(u"]:-- \"quoted\" \\ text"_s));
    QCOMPARE(channel_messages.first().file,
             u"../plugin_generic_functions/plugin_static_function"_s);
    QCOMPARE(channel_messages.first().function,
             u"static void plugin_static_function::app_debug(QString, QString)"_s);
}

void tst_debug_log::month_is_english_in_every_locale()
{
    const QLocale previous;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    switch_log(true, false, true, log_path);
    library::app_debug(message, caller);
    QLocale::setDefault(previous);
    QCOMPARE(without_time(logged()), shown_line + u'\n');
}

void tst_debug_log::time_is_the_current_local_time()
{
    const test_support::local_zone zone("Asia/Kolkata");
    switch_log(true, false, true, log_path);
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    library::app_debug(message, caller);
    const qint64 after = QDateTime::currentSecsSinceEpoch();
    const QDateTime shown =
        QLocale::c().toDateTime(logged().mid(1, 20), u"yyyy-MMM-dd'T'hh-mm-ss"_s);
    QVERIFY2(shown.isValid(), qPrintable(logged()));
    QCOMPARE(shown.offsetFromUtc(), 19800);
    QVERIFY2(shown.toSecsSinceEpoch() >= before && shown.toSecsSinceEpoch() <= after,
             qPrintable(logged()));
}

void tst_debug_log::file_keeps_what_it_held()
{
    evidence::write_file(log_path, "earlier\n");
    switch_log(true, false, true, log_path);
    library::app_debug(u"first"_s, u"void a()"_s);
    library::app_debug(u"second"_s, u"void a()"_s);
    const QStringList lines = logged().split(u'\n');
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), u"earlier"_s);
    QVERIFY(lines.at(1).endsWith(u"[a]:-- first"_s));
    QVERIFY(lines.at(2).endsWith(u"[a]:-- second"_s));
    QVERIFY(lines.at(3).isEmpty());
}

void tst_debug_log::text_is_written_in_the_local_encoding()
{
    const QString text = u"Größe 大小"_s;
    switch_log(true, false, true, log_path);
    library::app_debug(text, u"void a()"_s);
    QVERIFY(evidence::read_file(log_path).endsWith("]:-- " + text.toLocal8Bit() + '\n'));
}

void tst_debug_log::absent_file_stays_absent_without_a_message()
{
    const QString absent = folder->filePath(u"absent.log"_s);
    switch_log(true, false, true, absent);
    const channel_capture capture;
    library::app_debug(message, caller);
    QVERIFY(!QFile::exists(absent));
    QVERIFY(channel_messages.isEmpty());
}

void tst_debug_log::file_that_does_not_open_is_reported_on_the_terminal()
{
    QFile directory(folder->path());
    QVERIFY(!directory.open(QIODevice::ReadWrite | QIODevice::Append));
    switch_log(true, false, true, folder->path());
    const channel_capture capture;
    library::app_debug(message, caller);
    QCOMPARE(channel_messages.size(), 1);
    QCOMPARE(channel_messages.first().text,
             u"Debug File Open ----- FAILED-------   Error - "_s + directory.errorString());
}

void tst_debug_log::essentials_reset_the_context()
{
    library::debug_file_path = u"/log"_s;
    library::type_engine_int = 2;
    library::bool_cancel_extraction = true;
    library::source_count_int = 3;
    library::system_account_QStringList = {{u"ann"_s, {}}};
    library::examiner_selected_timezone_offset_qint64 = 1;
    library::examiner_machine_timezone_offset_qint64 = 2;
    library::examiner_selected_date_format_int = 1;
    library::debug_mode_status_bool = true;
    library::debug_print_in_file_bool = true;
    library::debug_print_on_terminal_bool = true;
    library::set_essentials();
    QCOMPARE(library::debug_file_path, QString());
    QCOMPARE(library::type_engine_int, -1);
    QCOMPARE(library::bool_cancel_extraction, false);
    QCOMPARE(library::source_count_int, -1);
    QCOMPARE(library::system_account_QStringList.size(), 0);
    QCOMPARE(library::examiner_selected_timezone_offset_qint64, 0);
    QCOMPARE(library::examiner_machine_timezone_offset_qint64, 0);
    QCOMPARE(library::examiner_selected_date_format_int, 0);
    QCOMPARE(library::debug_mode_status_bool, false);
    QCOMPARE(library::debug_print_in_file_bool, false);
    QCOMPARE(library::debug_print_on_terminal_bool, false);
}

void tst_debug_log::essentials_keep_the_operating_system_versions()
{
    library::examiner_machine_os_version_full = u"14.2"_s;
    library::source_os_version_full = u"10.0.19045"_s;
    library::set_essentials();
    QCOMPARE(library::examiner_machine_os_version_full, u"14.2"_s);
    QCOMPARE(library::source_os_version_full, u"10.0.19045"_s);
}

void tst_debug_log::setters_fill_the_context()
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source;
    source.os_version_full = u"10.0.19045"_s;
    source.system_account_list = {{u"ann"_s, {}}, {u"bob"_s, {}}};
    library::set_source_info(source);
    library::set_examiner_machine_info({19800, u"14.2"_s});
    library::set_engine_type(9);
    library::set_source_count(5);
    library::set_cancel_extraction(true);
    switch_log(true, false, true, u"/log"_s);
    QCOMPARE(library::source_os_version_full, u"10.0.19045"_s);
    QCOMPARE(library::system_account_QStringList.size(), 2);
    QCOMPARE(library::system_account_QStringList.at(1).system_user, u"bob"_s);
    QCOMPARE(library::examiner_machine_timezone_offset_qint64, 19800);
    QCOMPARE(library::examiner_machine_os_version_full, u"14.2"_s);
    QCOMPARE(library::type_engine_int, 9);
    QCOMPARE(library::source_count_int, 5);
    QCOMPARE(library::bool_cancel_extraction, true);
    QCOMPARE(library::debug_file_path, u"/log"_s);
    QCOMPARE(library::debug_mode_status_bool, true);
    QCOMPARE(library::debug_print_on_terminal_bool, false);
    QCOMPARE(library::debug_print_in_file_bool, true);
}

void tst_debug_log::source_count_name_follows_the_count()
{
    library::set_essentials();
    QCOMPARE(library::get_source_count_name(), u"Source-1"_s);
    library::set_source_count(3);
    QCOMPARE(library::get_source_count_name(), u"Source3"_s);
}

void tst_debug_log::cleared_source_record_keeps_its_last_two_texts()
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info source = {
        u"1"_s,   u"2"_s,  u"3"_s,  u"4"_s,  u"5"_s, {{u"ann"_s, u"6"_s}}, u"7"_s, u"8"_s,
        {u"9"_s}, u"10"_s, u"11"_s, u"12"_s, u"13"_s};
    library::clear_variables_arken_and_artifact_common_source_info(source);
    for (const QString &text :
         {source.source_root_path, source.source_text_2, source.os_scheme_display,
          source.os_scheme_internal, source.os_version_full, source.source_text_7,
          source.source_text_8, source.source_text_10, source.source_text_11})
        QCOMPARE(text, QString());
    QVERIFY(source.system_account_list.isEmpty());
    QVERIFY(source.source_text_list_9.isEmpty());
    QCOMPARE(source.source_text_12, u"12"_s);
    QCOMPARE(source.source_text_13, u"13"_s);
}

void tst_debug_log::cleared_machine_record_is_empty()
{
    struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info machine = {3600, u"14.2"_s};
    library::clear_variables_arken_and_artifact_common_examiner_machine_info(machine);
    QCOMPARE(machine.examiner_machine_timezone_offset, 0);
    QCOMPARE(machine.examiner_machine_os_version_full, QString());
}

void tst_debug_log::cleared_general_record_keeps_its_fifth_flag()
{
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info general = {true, true, true,
                                                                    true, true, u"/log"_s};
    library::clear_variables_arken_and_artifact_common_general_info(general);
    QCOMPARE(general.general_flag_1, false);
    QCOMPARE(general.debug_mode_status, false);
    QCOMPARE(general.debug_print_on_terminal, false);
    QCOMPARE(general.debug_print_in_file, false);
    QCOMPARE(general.general_flag_5, true);
    QCOMPARE(general.debug_file_path, QString());
}

void tst_debug_log::instance_belongs_to_its_parent()
{
    QWidget parent;
    const plugin_static_function instance(&parent);
    QCOMPARE(instance.parentWidget(), &parent);
}

TEST_MAIN(tst_debug_log)
#include "tst_debug_log.moc"
