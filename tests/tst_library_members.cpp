#include "files.h"
#include "test_main.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QString source_folder = QStringLiteral(PROJECT_SOURCE_FOLDER);

// What the suite's plug-ins may call of the library. A member that is taken away, or one that comes
// without its description or its test, fails here.
const QStringList static_members =
    u"set_essentials set_engine_type set_general_info set_examiner_machine_info set_source_info "
    "set_source_count set_cancel_extraction get_source_count_name "
    "clear_variables_arken_and_artifact_common_source_info "
    "clear_variables_arken_and_artifact_common_examiner_machine_info "
    "clear_variables_arken_and_artifact_common_general_info app_debug "
    "execute_db_command_by_dbpath execute_db_command_with_addbindvalue_by_dbpath "
    "execute_db_command_by_dbreference execute_db_command_with_addbindvalue_by_dbreference "
    "get_stringlist_from_db_by_dbreference "
    "get_stringlist_from_db_with_addbindvalues_by_dbreference get_stringlist_from_db_by_dbpath "
    "get_stringlist_from_db_with_addbindvalues_by_dbpath "
    "check_value_existence_in_db_by_dbreference get_total_tables_list_by_dbpath "
    "get_unmatched_varible_list_of_parentlist "
    "get_posix_timestamp convert_apple_time_to_epoch convert_google_time_to_epoch "
    "convert_epoch_to_custom get_human_readable_time convert_timezone_to_seconds_1 "
    "convert_human_readable_to_epoch convert_human_readable_to_epoch_1 "
    "convert_human_readable_to_epoch_2 convert_timestamp_to_human_readable_in_GMT "
    "convert_timestamp_to_human_readable_with_timezone convert_T_Z_time_to_epoch "
    "convert_nsdate_to_epoch extract_used_date "
    "get_final_artifact_source_file get_relative_file_path get_complete_file_path "
    "extract_user_name_from_sourcefile remove_directory copy_directory human_readable_size "
    "get_available_file is_file_exist_in_dir mining_suffix mining_size "
    "get_examiner_machine_os_scan_version get_source_os_scan_version "
    "get_filtered_number_value get_filtered_boolean_value get_filtered_cfstring_value "
    "get_filtered_string_value get_filtered_wherefrom_value get_filtered_date_value "
    "convert_string_to_unicode convert_cfstring_to_qstring get_nsstring_values "
    "get_nsnumber_values get_nsnumber_values_yes_no get_nsstring_key_and_values "
    "get_nsnumber_key_and_values get_nsnumber_key_and_value_yes_no get_nsarray_key_and_values"_s
        .split(u' ');

const QStringList helper_members =
    u"set_essentials set_cancel_extraction set_adhoc_parent_path check_is_image_by_extn "
    "check_is_video_by_extn check_is_audio_by_extn get_adhoc_path_for_database "
    "get_adhoc_path_for_regular_file"_s.split(u' ');

const QString static_header = u"plugin_static_function.h"_s;
const QString helper_header = u"plugin_helper_functions.h"_s;

QString text_of(const QString &path)
{
    return QString::fromUtf8(evidence::read_file(path));
}

QString header_text(const QString &header)
{
    return text_of(source_folder + u"/plugin_generic_functions/"_s + header);
}

// The members that the header documents: a "///" line directly before the declaration.
QStringList documented_members(const QString &header)
{
    static const QRegularExpression declaration(
        u"///[^\\n]*\\n    (?!///)[^;(}]*?\\b([a-z][A-Za-z0-9_]*)\\("_s);
    QStringList names;
    for (const QRegularExpressionMatch &match : declaration.globalMatch(header_text(header)))
        names.append(match.captured(1));
    return names;
}

// All that the header declares between "public:" and "private:".
QStringList declared_members(const QString &header)
{
    static const QRegularExpression comment(u"//[^\\n]*"_s);
    static const QRegularExpression declaration(
        u"\\n    (?!explicit)[A-Za-z][^;{}()]*?\\b([a-z][A-Za-z0-9_]*)\\("_s);
    QString text = header_text(header).section(u"public:"_s, 1, -1).section(u"private:"_s, 0, 0);
    text.remove(comment);
    QStringList names;
    for (const QRegularExpressionMatch &match : declaration.globalMatch(text))
        names.append(match.captured(1));
    return names;
}

QString texts_of_tests()
{
    QString texts;
    // The family of SQLite helpers is called from a list that its tests go through.
    QDirIterator tests(source_folder + u"/tests"_s, {u"tst_*.cpp"_s, u"sqlite_helpers.cpp"_s},
                       QDir::Files, QDirIterator::Subdirectories);
    while (tests.hasNext()) {
        const QString path = tests.next();
        if (!path.endsWith(u"tst_library_members.cpp"_s))
            texts += text_of(path);
    }
    return texts;
}

void add_members(const QString &header, const QString &caller, const QStringList &members)
{
    for (const QString &member : members)
        QTest::newRow(qPrintable(header + u' ' + member)) << header << member << caller;
}

} // namespace

class tst_library_members : public QObject
{
    Q_OBJECT

private slots:
    void member_is_declared_documented_and_tested_data();
    void member_is_declared_documented_and_tested();
    void header_declares_listed_members_only();
};

void tst_library_members::member_is_declared_documented_and_tested_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<QString>("member");
    QTest::addColumn<QString>("caller");
    add_members(static_header, u"(library|plugin_static_function)::"_s, static_members);
    add_members(helper_header, u"helper->"_s, helper_members);
}

void tst_library_members::member_is_declared_documented_and_tested()
{
    QFETCH(const QString, header);
    QFETCH(const QString, member);
    QFETCH(const QString, caller);
    static const QString tests = texts_of_tests();
    QVERIFY2(declared_members(header).contains(member), "not declared");
    QVERIFY2(documented_members(header).contains(member), "not documented");
    QVERIFY2(tests.contains(QRegularExpression(u"\\b"_s + caller + member + u"\\("_s)),
             "not called by a test");
}

void tst_library_members::header_declares_listed_members_only()
{
    QStringList declared = declared_members(static_header);
    QStringList listed = static_members;
    declared.sort();
    listed.sort();
    QCOMPARE(declared, listed);
}

TEST_MAIN(tst_library_members)
#include "tst_library_members.moc"
