#include "host_context_records.h"

#include "test_main.h"

#include <QTest>

#include <type_traits>

using namespace Qt::StringLiterals;

namespace {

using source_info = struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_source_info;
using system_account = struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_system_account;
using general_info = struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info;
using machine_info = struct_GLOBAL_ARKEN_AND_ARTIFACT_COMMON_examiner_machine_info;
using source_file = struct_GLOBAL_ARTIFACT_artifact_source_file;
using file_times = struct_GLOBAL_ARTIFACT_file_times;

// The number of bytes before a member.
template<typename record, typename member>
qsizetype place_of(const record &value, const member &part)
{
    return reinterpret_cast<const char *>(&part) - reinterpret_cast<const char *>(&value);
}

qsizetype texts(int count)
{
    return count * static_cast<qsizetype>(sizeof(QString));
}

} // namespace

class tst_host_records : public QObject
{
    Q_OBJECT

private slots:
    void source_record_holds_thirteen_members_in_order();
    void account_record_holds_two_texts();
    void general_record_holds_five_flags_and_a_text();
    void machine_record_holds_an_offset_and_a_text();
    void source_file_record_holds_the_shown_path_first();
    void file_times_record_holds_creation_access_modification();
    void records_copy_member_by_member();
    void default_source_record_is_empty();
};

void tst_host_records::source_record_holds_thirteen_members_in_order()
{
    const source_info record;
    const qsizetype list = sizeof(QList<system_account>);
    QCOMPARE(place_of(record, record.source_root_path), texts(0));
    QCOMPARE(place_of(record, record.source_text_2), texts(1));
    QCOMPARE(place_of(record, record.os_scheme_display), texts(2));
    QCOMPARE(place_of(record, record.os_scheme_internal), texts(3));
    QCOMPARE(place_of(record, record.os_version_full), texts(4));
    QCOMPARE(place_of(record, record.system_account_list), texts(5));
    QCOMPARE(place_of(record, record.source_text_7), texts(5) + list);
    QCOMPARE(place_of(record, record.source_text_8), texts(6) + list);
    QCOMPARE(place_of(record, record.source_text_list_9), texts(7) + list);
    QCOMPARE(place_of(record, record.source_text_10), texts(7) + 2 * list);
    QCOMPARE(place_of(record, record.source_text_11), texts(8) + 2 * list);
    QCOMPARE(place_of(record, record.source_text_12), texts(9) + 2 * list);
    QCOMPARE(place_of(record, record.source_text_13), texts(10) + 2 * list);
    QCOMPARE(static_cast<qsizetype>(sizeof(record)), texts(11) + 2 * list);
    QVERIFY((std::is_same_v<decltype(record.source_text_list_9), QStringList>));
}

void tst_host_records::account_record_holds_two_texts()
{
    const system_account record;
    QCOMPARE(place_of(record, record.system_user), texts(0));
    QCOMPARE(place_of(record, record.account_text_2), texts(1));
    QCOMPARE(static_cast<qsizetype>(sizeof(record)), texts(2));
}

void tst_host_records::general_record_holds_five_flags_and_a_text()
{
    const general_info record;
    QCOMPARE(place_of(record, record.general_flag_1), 0);
    QCOMPARE(place_of(record, record.debug_mode_status), 1);
    QCOMPARE(place_of(record, record.debug_print_on_terminal), 2);
    QCOMPARE(place_of(record, record.debug_print_in_file), 3);
    QCOMPARE(place_of(record, record.general_flag_5), 4);
    QCOMPARE(place_of(record, record.debug_file_path), 8);
    QCOMPARE(static_cast<qsizetype>(sizeof(record)), 8 + texts(1));
}

void tst_host_records::machine_record_holds_an_offset_and_a_text()
{
    const machine_info record;
    QCOMPARE(place_of(record, record.examiner_machine_timezone_offset), 0);
    QCOMPARE(place_of(record, record.examiner_machine_os_version_full), 8);
    QVERIFY((std::is_same_v<decltype(record.examiner_machine_timezone_offset), qint64>));
}

void tst_host_records::source_file_record_holds_the_shown_path_first()
{
    const source_file record;
    QCOMPARE(place_of(record, record.display_path), texts(0));
    QCOMPARE(place_of(record, record.complete_path), texts(1));
}

void tst_host_records::file_times_record_holds_creation_access_modification()
{
    const file_times record;
    QCOMPARE(place_of(record, record.creation_time), 0);
    QCOMPARE(place_of(record, record.last_access_time), 8);
    QCOMPARE(place_of(record, record.last_modification_time), 16);
    QCOMPARE(record.creation_time + record.last_access_time + record.last_modification_time, 0);
}

void tst_host_records::records_copy_member_by_member()
{
    source_info original;
    original.os_scheme_internal = u"winOS"_s;
    original.system_account_list = {{u"ann"_s, {}}};
    const source_info copy = original;
    original.os_scheme_internal = u"macOS"_s;
    original.system_account_list.clear();
    QCOMPARE(copy.os_scheme_internal, u"winOS"_s);
    QCOMPARE(copy.system_account_list.size(), 1);
    QCOMPARE(copy.system_account_list.first().system_user, u"ann"_s);
}

void tst_host_records::default_source_record_is_empty()
{
    const source_info record;
    QVERIFY(record.source_root_path.isEmpty());
    QVERIFY(record.os_scheme_internal.isEmpty());
    QVERIFY(record.system_account_list.isEmpty());
    QVERIFY(record.source_text_list_9.isEmpty());
}

TEST_MAIN(tst_host_records)
#include "tst_host_records.moc"
