#include "files.h"
#include "guarded_hive.h"
#include "hive_builder.h"
#include "hive_damage.h"
#include "regf_format.h"
#include "test_main.h"
#include "walked_hive.h"

#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// ASCII names are taken from the record itself; libhivex must have given the same.
class tst_value_names : public QObject
{
    Q_OBJECT

private slots:
    void gives_the_names_that_libhivex_gives_data();
    void gives_the_names_that_libhivex_gives();
    void gives_no_name_that_leaves_its_cell();

private:
    QString written(const QByteArray &hive) const
    {
        write_file(m_folder.filePath(u"hive"_s), hive);
        return m_folder.filePath(u"hive"_s);
    }

    QTemporaryDir m_folder;
};

void tst_value_names::gives_the_names_that_libhivex_gives_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("field"); // of the value's record, that is altered; 0: none
    QTest::addColumn<int>("content");
    const auto row = [](const char *title, const QString &name, qint64 field, int content) {
        QTest::newRow(title) << name << field << content;
    };
    namespace vk = regf::vk;
    row("ASCII", u"DisplayName"_s, 0, 0);
    row("no name", QString(), 0, 0);
    row("Latin-1", u"Größe"_s, 0, 0);
    row("another script", u"Яндекс"_s, 0, 0);
    row("16,383 letters", QString(16383, u'x'), 0, 0);
    row("the first byte that is not ASCII", u"abcd"_s, vk::name + 2, 0x8064);
    row("the last byte that is ASCII", u"abcd"_s, vk::name + 2, 0x647f);
    row("a zero byte", u"abcd"_s, vk::name + 2, 0x6400);
    row("UTF-16 of two ASCII characters", u"a\0b"_s, vk::flags, 0);
    row("UTF-16 by its flag alone", u"abcd"_s, vk::flags, 0);
    row("other flags beside", u"abcd"_s, vk::flags, 0xffff);
    row("fewer bytes than there are", u"abcdefgh"_s, vk::name_size, 3);
    row("up to the cell's end", u"abcd"_s, vk::name_size, 8);
    row("one byte beyond the cell", u"abcd"_s, vk::name_size, 9);
    row("beyond the file", u"abcd"_s, vk::name_size, 0xffff);
    row("another record", u"abcd"_s, regf::cell_head::signature, 0x6b6e);
}

/// Both read the same handle, and libhivex nothing that is not there.
void tst_value_names::gives_the_names_that_libhivex_gives()
{
    QFETCH(const QString, name);
    QFETCH(const qint64, field);
    QFETCH(const int, content);
    hive_builder builder;
    builder.root().dword(name, 7);
    hive_damage damage(builder.bytes());
    const qint64 cell = builder.root().cells_of_value(0).value;
    if (field != 0)
        damage.set_16(cell + field, static_cast<quint16>(content));
    guarded_hive hive;
    QVERIFY(hive.open(written(damage.bytes())));
    unguarded_hive plain(hive.handle());
    const hivex_text expected = plain.value_name(handle_at(cell));
    const hivex_text read = hive.value_name(handle_at(cell));
    QCOMPARE(read == nullptr, expected == nullptr);
    QCOMPARE(QByteArray(read.get()), QByteArray(expected.get()));
}

// Behind the cell stands the size of the next one: 8, which is an ASCII character, too.
void tst_value_names::gives_no_name_that_leaves_its_cell()
{
    hive_builder builder;
    builder.root().dword(QString(16, u'x'), 7);
    hive_damage damage(builder.bytes());
    const qint64 cell = builder.root().cells_of_value(0).value;
    damage.shrink_cell(cell, 32);
    guarded_hive hive;
    damage.value_name_size(cell, 8);
    QVERIFY(hive.open(written(damage.bytes())));
    QCOMPARE(QByteArray(hive.value_name(handle_at(cell)).get()), "xxxxxxxx"_ba);
    damage.value_name_size(cell, 9);
    QVERIFY(hive.open(written(damage.bytes())));
    QVERIFY(hive.value_name(handle_at(cell)) == nullptr);
}

TEST_MAIN(tst_value_names)
#include "tst_value_names.moc"
