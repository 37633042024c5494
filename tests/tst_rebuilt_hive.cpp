#include "files.h"
#include "hive_base_block.h"
#include "hive_reader.h"
#include "rebuilt_hive.h"
#include "registry_data.h"
#include "test_main.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Hives that are made of recovered keys, read by libhivex.
class tst_rebuilt_hive : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_hive = {}; }
    void is_an_empty_hive_without_keys();
    void has_keys_values_and_times();
    void makes_the_keys_above_empty();
    void knows_a_key_in_any_letter_case();
    void keeps_names_and_data_data();
    void keeps_names_and_data();
    void takes_more_keys_than_one_list();
    void writes_the_same_bytes_again();

private:
    hive_reader read()
    {
        const QString file = m_folder.filePath(u"hive"_s);
        write_file(file, m_hive.bytes());
        return hive_reader(file);
    }

    QTemporaryDir m_folder;
    rebuilt_hive m_hive;
};

namespace {

const QStringList editor{u"Microsoft"_s, u"Uninstall"_s, u"Editor"_s};

} // namespace

void tst_rebuilt_hive::is_an_empty_hive_without_keys()
{
    const QByteArray bytes = m_hive.bytes();
    const hive_base_block block(bytes.first(4096));
    QVERIFY(block.is_checksum_right());
    QCOMPARE(block.told_length(), bytes.size());
    const hive_reader reader = read();
    QVERIFY(reader.is_open());
    QCOMPARE(reader.subkeys(QString()), QStringList());
}

void tst_rebuilt_hive::has_keys_values_and_times()
{
    m_hive.add_key(editor, 133000000000000000);
    m_hive.add_value(editor, u"DisplayName"_s, reg_sz, registry_text(u"Editor 2.1"_s));
    m_hive.add_value(editor, u"NoModify"_s, reg_dword, registry_dword(1));
    const hive_reader reader = read();
    const QString path = editor.join(u'\\');
    QCOMPARE(reader.last_write(path), 133000000000000000);
    const QList<read_value> values = reader.values(path);
    QCOMPARE(values.size(), 2);
    QCOMPARE(values.at(0).name, u"DisplayName"_s);
    QCOMPARE(values.at(0).type, int(reg_sz));
    QCOMPARE(values.at(0).data, registry_text(u"Editor 2.1"_s));
    QCOMPARE(values.at(1).data, registry_dword(1));
}

void tst_rebuilt_hive::makes_the_keys_above_empty()
{
    m_hive.add_key(editor, 133000000000000000);
    const hive_reader reader = read();
    QCOMPARE(reader.last_write(u"Microsoft\\Uninstall"_s), 0);
    QVERIFY(reader.values(u"Microsoft\\Uninstall"_s).isEmpty());
    QCOMPARE(reader.subkeys(u"Microsoft\\Uninstall"_s), QStringList{u"Editor"_s});
}

void tst_rebuilt_hive::knows_a_key_in_any_letter_case()
{
    m_hive.add_key(editor, 1);
    m_hive.add_value({u"MICROSOFT"_s, u"uninstall"_s, u"Viewer"_s}, u"a"_s, reg_sz, "x");
    QVERIFY(m_hive.has_key({u"microsoft"_s, u"UNINSTALL"_s, u"EDITOR"_s}));
    QVERIFY(!m_hive.has_key({u"Editor"_s}));
    QCOMPARE(read().subkeys(u"Microsoft\\Uninstall"_s), (QStringList{u"Editor"_s, u"Viewer"_s}));
}

void tst_rebuilt_hive::keeps_names_and_data_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("a name in Latin-1") << u"Größe"_s << QByteArray("12345678");
    QTest::newRow("a name in another script") << u"Имя"_s << QByteArray("12345678");
    QTest::newRow("no name") << QString() << QByteArray("12345678");
    QTest::newRow("no data") << u"a"_s << QByteArray();
    QTest::newRow("data within the value") << u"a"_s << QByteArray("1234");
    QTest::newRow("data in a cell") << u"a"_s << QByteArray("12345");
    QTest::newRow("long data") << u"a"_s << QByteArray(100'000, 'x');
}

void tst_rebuilt_hive::keeps_names_and_data()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, data);
    m_hive.add_value({u"key "_s + name}, name, reg_binary, data);
    const hive_reader reader = read();
    QCOMPARE(reader.subkeys(QString()), QStringList{u"key "_s + name});
    const QList<read_value> values = reader.values(u"key "_s + name);
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.first().name, name);
    QCOMPARE(values.first().data, data);
}

void tst_rebuilt_hive::takes_more_keys_than_one_list()
{
    constexpr int keys = 2500;
    for (int i = 0; i < keys; ++i)
        m_hive.add_key({u"top"_s, QString::number(i)}, 1);
    QCOMPARE(read().subkeys(u"top"_s).size(), keys);
}

void tst_rebuilt_hive::writes_the_same_bytes_again()
{
    m_hive.add_value(editor, u"a"_s, reg_sz, "12345678");
    QCOMPARE(m_hive.bytes(), m_hive.bytes());
}

TEST_MAIN(tst_rebuilt_hive)
#include "tst_rebuilt_hive.moc"
