#include "application_keys.h"
#include "parse_installed_applications.h"
#include "test_main.h"
#include "walked_hive.h"

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

using applications_hive = walked_hive<parse_installed_applications>;

class tst_parse_installed_applications : public QObject
{
    Q_OBJECT

private slots:
    void reads_every_field_of_an_application();
    void records_a_subkey_without_values();
    void takes_names_of_values_to_the_letter_data();
    void takes_names_of_values_to_the_letter();
    void keeps_the_last_of_equal_values();
    void carries_nothing_from_one_application_to_the_next();
    void orders_applications_by_name();
    void ignores_the_keys_own_values_and_deeper_keys();
    void recognises_uninstall_keys_data();
    void recognises_uninstall_keys();
    void records_nothing_when_an_uninstall_key_itself_is_read();
    void converts_fields_of_any_type_data();
    void converts_fields_of_any_type();
    void goes_over_damaged_neighbours();

    void records_registered_applications();
    void records_values_of_a_deeper_registered_key();
    void records_the_compatibility_store_as_bytes();
    void asks_for_the_uninstall_key_first();
    void tells_the_kinds_of_key_by_letter_case_data();
    void tells_the_kinds_of_key_by_letter_case();
    void reads_no_values_below_registered_applications();

    void keeps_the_key_path();
    void accumulates_records_over_walks();
    void finds_no_record_of_a_missing_key();
};

namespace {

/// Records as their ten fields in order, separated by bars.
QStringList texts_of(const QList<registry::struct_installed_apps> &records)
{
    QStringList texts;
    for (const auto &[key_name, publisher, display_name, display_version, install_location,
                      install_date, install_source, url_info_about, uninstall_string,
                      modified_timestamp] : records)
        texts.append(QStringList{key_name, publisher, display_name, display_version,
                                 install_location, install_date, install_source, url_info_about,
                                 uninstall_string, modified_timestamp}
                         .join(u'|'));
    return texts;
}

/// Records as "name|value|data".
QStringList texts_of(const QList<registry::struct_data> &records)
{
    QStringList texts;
    for (const registry::struct_data &record : records)
        texts.append(record.name + u'|' + record.value + u'|' + QString::fromLatin1(record.data));
    return texts;
}

QStringList key_names_of(const parse_installed_applications &walker)
{
    QStringList names;
    for (const registry::struct_installed_apps &record : walker.installed_apps_records)
        names.append(record.key_name);
    return names;
}

} // namespace

void tst_parse_installed_applications::reads_every_field_of_an_application()
{
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\{App}"_s)
        .last_write_unix(1700000000)
        .text(u"UninstallString"_s, u"uninstall"_s)
        .text(u"URLInfoAbout"_s, u"url"_s)
        .text(u"InstallSource"_s, u"source"_s)
        .text(u"InstallDate"_s, u"20240131"_s)
        .text(u"InstallLocation"_s, u"location"_s)
        .text(u"DisplayVersion"_s, u"version"_s)
        .text(u"DisplayName"_s, u"name"_s)
        .text(u"Publisher"_s, u"publisher"_s)
        .text(u"DisplayIcon"_s, u"icon"_s)
        .dword(u"EstimatedSize"_s, 0x41424344);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records),
             QStringList{u"{App}|publisher|name|version|location|20240131|source|url|uninstall|"
                         "1700000000"_s});
    QVERIFY(walked.walker.data_records.isEmpty());
}

void tst_parse_installed_applications::records_a_subkey_without_values()
{
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\bare"_s).last_write_unix(5);
    walked.hive.key(uninstall_key + u"\\parent\\below"_s).last_write_unix(7);
    walked.hive.key(uninstall_key + u"\\parent"_s).last_write_unix(6);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records),
             (QStringList{u"bare|||||||||5"_s, u"parent|||||||||6"_s}));
}

void tst_parse_installed_applications::takes_names_of_values_to_the_letter_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("lower case") << u"displayname"_s;
    QTest::addRow("upper case") << u"DISPLAYNAME"_s;
    QTest::addRow("a blank before it") << u" DisplayName"_s;
    QTest::addRow("a blank behind it") << u"DisplayName "_s;
    QTest::addRow("its beginning") << u"Display"_s;
    QTest::addRow("more behind it") << u"DisplayName2"_s;
    QTest::addRow("no letters") << u""_s;
}

void tst_parse_installed_applications::takes_names_of_values_to_the_letter()
{
    QFETCH(const QString, name);
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\app"_s).last_write_unix(0).text(name, u"other"_s);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records), QStringList{u"app|||||||||0"_s});
}

void tst_parse_installed_applications::keeps_the_last_of_equal_values()
{
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\app"_s)
        .last_write_unix(0)
        .text(u"DisplayName"_s, u"first"_s)
        .text(u"DisplayName"_s, u"last"_s)
        .text(u"Publisher"_s, u"gone"_s)
        .text(u"Publisher"_s, u""_s);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records), QStringList{u"app||last|||||||0"_s});
}

void tst_parse_installed_applications::carries_nothing_from_one_application_to_the_next()
{
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\1"_s).last_write_unix(1).text(u"Publisher"_s, u"one"_s);
    walked.hive.key(uninstall_key + u"\\2"_s).last_write_unix(2).text(u"DisplayName"_s, u"two"_s);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records),
             (QStringList{u"1|one||||||||1"_s, u"2||two|||||||2"_s}));
    QCOMPARE(walked.walker.current_key_timestamp, u"2"_s);
}

void tst_parse_installed_applications::orders_applications_by_name()
{
    applications_hive walked;
    for (const QString &name : {u"b"_s, u"{B}"_s, u"A"_s, u"a"_s, u"Ä"_s, u"7-Zip"_s})
        walked.hive.key(uninstall_key).add_key(name);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(key_names_of(walked.walker),
             (QStringList{u"7-Zip"_s, u"A"_s, u"a"_s, u"b"_s, u"{B}"_s, u"Ä"_s}));
}

void tst_parse_installed_applications::ignores_the_keys_own_values_and_deeper_keys()
{
    applications_hive walked;
    walked.hive.key(uninstall_key).text(u"DisplayName"_s, u"own"_s);
    walked.hive.key(uninstall_key + u"\\app"_s).last_write_unix(3);
    walked.hive.key(uninstall_key + u"\\app\\below"_s).text(u"DisplayName"_s, u"below"_s);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records), QStringList{u"app|||||||||3"_s});
}

void tst_parse_installed_applications::recognises_uninstall_keys_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addColumn<bool>("reads_values");
    QTest::addRow("the 64-bit view") << uninstall_key << true;
    QTest::addRow("the 32-bit view") << uninstall_key_32 << true;
    QTest::addRow("a user's key") << u"SOFTWARE\\"_s + uninstall_key << true;
    QTest::addRow("backslashes around it") << u'\\' + uninstall_key + u'\\' << true;
    QTest::addRow("more behind the name") << uninstall_key + u"Old"_s << true;
    QTest::addRow("a key below it") << uninstall_key + u"\\group"_s << true;
    QTest::addRow("other letter case") << uninstall_key.toLower() << false;
    QTest::addRow("a doubled backslash within it")
        << u"Microsoft\\Windows\\\\CurrentVersion\\Uninstall"_s << false;
    QTest::addRow("an unknown key") << u"Vendor\\Applications"_s << false;
}

// Every subkey gives a record; whether its values are read depends on the path.
void tst_parse_installed_applications::recognises_uninstall_keys()
{
    QFETCH(const QString, key_path);
    QFETCH(const bool, reads_values);
    applications_hive walked;
    walked.hive.key(key_path + u"\\app"_s)
        .last_write_unix(1700000000)
        .text(u"DisplayName"_s, u"N"_s)
        .text(u"Publisher"_s, u"P"_s);
    QCOMPARE(walked.walk(key_path, false), 0);
    const auto &records = walked.walker.installed_apps_records;
    QCOMPARE(texts_of(records), QStringList{reads_values ? u"app|P|N|||||||1700000000"_s
                                                         : u"app|||||||||1700000000"_s});
    QVERIFY(walked.walker.data_records.isEmpty());
}

void tst_parse_installed_applications::records_nothing_when_an_uninstall_key_itself_is_read()
{
    applications_hive walked;
    walked.hive.key(uninstall_key).text(u"DisplayName"_s, u"own"_s);
    QCOMPARE(walked.walk(uninstall_key, true), 0);
    QVERIFY(walked.walker.installed_apps_records.isEmpty());
    QVERIFY(walked.walker.data_records.isEmpty());
}

void tst_parse_installed_applications::converts_fields_of_any_type_data()
{
    QTest::addColumn<quint32>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("text");
    QTest::addRow("a text") << quint32(reg_sz) << registry_text(u"7-Zip 24"_s) << u"7-Zip 24"_s;
    QTest::addRow("a number") << quint32(reg_dword) << registry_dword(0x41) << u"A"_s;
    QTest::addRow("bytes") << quint32(reg_binary) << "\x31\0\x32"_ba << u"12"_s;
    QTest::addRow("no bytes") << quint32(reg_sz) << QByteArray() << u""_s;
    QTest::addRow("letters beyond ASCII")
        << quint32(reg_sz) << registry_text(u"é"_s) << u"\ufffd"_s;
    QTest::addRow("no terminator and an odd length") << quint32(reg_sz) << "A\0B\0C"_ba << u"ABC"_s;
}

void tst_parse_installed_applications::converts_fields_of_any_type()
{
    QFETCH(const quint32, type);
    QFETCH(const QByteArray, data);
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\app"_s).value(u"DisplayName"_s, type, data);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QTEST(walked.walker.installed_apps_records.first().display_name, "text");
}

void tst_parse_installed_applications::goes_over_damaged_neighbours()
{
    applications_hive walked;
    for (const QString &name : {u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s})
        walked.hive.key(uninstall_key + u'\\' + name)
            .last_write_unix(9)
            .text(u"DisplayName"_s, u"N"_s + name)
            .text(u"Publisher"_s, u"P"_s + name);
    hive_damage damage = walked.damage();
    const auto app = [&](const QString &name) -> hive_key & {
        return walked.hive.key(uninstall_key + u'\\' + name);
    };
    damage.value_count(app(u"2"_s).cells().key, 500)
        .key_name_size(app(u"3"_s).cells().key, 60000)
        .data_cell(app(u"4"_s).cells_of_value(0).value, 0x7ffff000)
        .value_name_size(app(u"5"_s).cells_of_value(1).value, 60000)
        .last_write(app(u"6"_s).cells().key, -1);
    QCOMPARE(walked.walk(damage, uninstall_key, false), 0);
    QCOMPARE(texts_of(walked.walker.installed_apps_records),
             (QStringList{u"1|P1|N1|||||||9"_s, u"2|||||||||9"_s, u"4|P4||||||||9"_s,
                          u"5||N5|||||||9"_s, u"6|P6|N6|||||||-11644473600"_s}));
}

void tst_parse_installed_applications::records_registered_applications()
{
    applications_hive walked;
    walked.hive.key(registered_applications_key)
        .text(u"Paint"_s, u"SOFTWARE\\Paint\\Capabilities"_s)
        .text(u"A"_s, u"SOFTWARE\\A"_s)
        .dword(u""_s, 0x42);
    QCOMPARE(walked.walk(u'\\' + registered_applications_key, true), 0);
    QCOMPARE(
        texts_of(walked.walker.data_records),
        (QStringList{u"Paint|SOFTWARE\\Paint\\Capabilities|"_s, u"A|SOFTWARE\\A|"_s, u"|B|"_s}));
    QCOMPARE(walked.walker.current_key_name, registered_applications_key);
    QVERIFY(walked.walker.installed_apps_records.isEmpty());
}

void tst_parse_installed_applications::records_values_of_a_deeper_registered_key()
{
    applications_hive walked;
    walked.hive.key(u"SOFTWARE\\RegisteredApplications\\below"_s).text(u"v"_s, u"V"_s);
    QCOMPARE(walked.walk(u"SOFTWARE\\RegisteredApplications\\below"_s, true), 0);
    QCOMPARE(texts_of(walked.walker.data_records), QStringList{u"v|V|"_s});
}

void tst_parse_installed_applications::records_the_compatibility_store_as_bytes()
{
    applications_hive walked;
    walked.hive.key(compatibility_store_key)
        .binary(u"C:\\z.exe"_s, "SACP\xff\x01"_ba)
        .dword(u"C:\\a.exe"_s, 0x41424344)
        .binary(u"C:\\empty.exe"_s, {});
    QCOMPARE(walked.walk(compatibility_store_key, true), 0);
    QCOMPARE(
        texts_of(walked.walker.data_records),
        (QStringList{u"C:\\z.exe||SACP\u00ff\x01"_s, u"C:\\a.exe||DCBA"_s, u"C:\\empty.exe||"_s}));
}

void tst_parse_installed_applications::asks_for_the_uninstall_key_first()
{
    const QString both = uninstall_key + u"\\RegisteredApplications"_s;
    applications_hive walked;
    walked.hive.key(both).text(u"v"_s, u"V"_s).key(u"app"_s).text(u"DisplayName"_s, u"N"_s);
    QCOMPARE(walked.walk(both, true), 0);
    QVERIFY(walked.walker.data_records.isEmpty());
    QCOMPARE(walked.walk(both, false), 0);
    QCOMPARE(walked.walker.installed_apps_records.first().display_name, u"N"_s);

    const QString registered_store = compatibility_store_key + u"\\RegisteredApplications"_s;
    walked.hive.key(registered_store).text(u"v"_s, u"V"_s);
    QCOMPARE(walked.walk(registered_store, true), 0);
    QCOMPARE(texts_of(walked.walker.data_records), QStringList{u"v|V|"_s});
}

void tst_parse_installed_applications::tells_the_kinds_of_key_by_letter_case_data()
{
    QTest::addColumn<QString>("key_path");
    QTest::addRow("registered applications") << u"\\registeredapplications"_s;
    QTest::addRow("registered applications without a backslash") << registered_applications_key;
    QTest::addRow("the compatibility store") << compatibility_store_key.toUpper();
    QTest::addRow("the compatibility store behind a doubled backslash")
        << u"SOFTWARE\\"_s + compatibility_store_key.mid(8);
    QTest::addRow("the compatibility store of a SOFTWARE hive") << compatibility_store_key.mid(9);
}

void tst_parse_installed_applications::tells_the_kinds_of_key_by_letter_case()
{
    QFETCH(const QString, key_path);
    applications_hive walked;
    walked.hive.key(key_path).text(u"v"_s, u"V"_s);
    QCOMPARE(walked.walk(key_path, true), 0);
    QVERIFY(!walked.walker.current_key_name.isEmpty());
    QVERIFY(walked.walker.data_records.isEmpty());
}

void tst_parse_installed_applications::reads_no_values_below_registered_applications()
{
    applications_hive walked;
    walked.hive.key(registered_applications_key + u"\\below"_s)
        .last_write_unix(4)
        .text(u"DisplayName"_s, u"N"_s);
    QCOMPARE(walked.walk(u'\\' + registered_applications_key, true), 0);
    QCOMPARE(walked.walk(u'\\' + registered_applications_key, false), 0);
    QVERIFY(walked.walker.data_records.isEmpty());
    QCOMPARE(texts_of(walked.walker.installed_apps_records), QStringList{u"below|||||||||4"_s});
}

void tst_parse_installed_applications::keeps_the_key_path()
{
    applications_hive walked;
    QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, u"a"_s, true), -1);
    QCOMPARE(walked.walker.parsed_key_path, u"a"_s);
    QCOMPARE(walked.walker.start_registry_parse(u""_s, u"b"_s, true), -1);
    QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, u""_s, true), -1);
    QCOMPARE(walked.walker.parsed_key_path, u"a"_s);
    QCOMPARE(walked.walk(u"\\c\\"_s, false), 0);
    QCOMPARE(walked.walker.parsed_key_path, u"\\c\\"_s);
}

void tst_parse_installed_applications::accumulates_records_over_walks()
{
    applications_hive walked;
    walked.hive.key(uninstall_key + u"\\app"_s);
    walked.hive.key(registered_applications_key).text(u"v"_s, u"V"_s);
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(walked.walk(uninstall_key, false), 0);
        QCOMPARE(walked.walk(u'\\' + registered_applications_key, true), 0);
        QCOMPARE(walked.walker.start_registry_parse(u"/no/such/hive"_s, uninstall_key, false), -1);
    }
    QCOMPARE(key_names_of(walked.walker), (QStringList{u"app"_s, u"app"_s}));
    QCOMPARE(texts_of(walked.walker.data_records), (QStringList{u"v|V|"_s, u"v|V|"_s}));
}

void tst_parse_installed_applications::finds_no_record_of_a_missing_key()
{
    applications_hive walked;
    walked.hive.key(u"Microsoft\\Windows"_s);
    QCOMPARE(walked.walk(uninstall_key, false), 0);
    QCOMPARE(walked.walk(u'\\' + registered_applications_key, true), 0);
    QCOMPARE(walked.walk(compatibility_store_key, true), 0);
    QVERIFY(walked.walker.installed_apps_records.isEmpty());
    QVERIFY(walked.walker.data_records.isEmpty());
}

TEST_MAIN(tst_parse_installed_applications)
#include "tst_parse_installed_applications.moc"
