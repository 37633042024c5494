#include "files.h"
#include "hive_builder.h"
#include "hive_file.h"
#include "regf_format.h"
#include "test_main.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

/// What the system does when a part of a file is read.
struct file_reading
{
    size_t most_bytes = SIZE_MAX; ///< that it gives at once
    int interruptions = 0;        ///< before it gives any
    bool fails = false;
    QSet<qint64> ends; ///< up to where it was asked
};

file_reading reading;

} // namespace

/// Takes the place of the system's operation in this program.
extern "C" ssize_t pread(int file, void *destination, size_t length, off_t offset)
{
    reading.ends.insert(offset + static_cast<qint64>(length));
    if (reading.fails || reading.interruptions-- > 0) {
        errno = reading.fails ? EIO : EINTR;
        return -1;
    }
    lseek(file, offset, SEEK_SET);
    return read(file, destination, std::min(length, reading.most_bytes));
}

class tst_hive_file : public QObject
{
    Q_OBJECT

private slots:
    void init() { reading = {}; }

    void opens_a_regular_file();
    void opens_nothing_else_data();
    void opens_nothing_else();
    void is_limited_by_the_reach_of_an_offset();
    void knows_what_lies_inside_the_file();
    void holds_nothing_while_closed();
    void reads_bytes_in_any_order();
    void reads_on_where_the_system_stops();
    void reads_nothing_that_the_system_refuses();
    void reads_numbers();
    void tells_where_a_cell_lies();
    void reads_no_more_than_there_is();
    void reads_nothing_of_a_file_that_is_emptied();
    void reads_the_file_that_was_opened_last();

private:
    QString path() const { return m_folder.filePath(u"hive"_s); }

    QTemporaryDir m_folder;
};

void tst_hive_file::opens_a_regular_file()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(!file.is_open());
    QVERIFY(file.open(path()));
    QVERIFY(file.is_open());
    QCOMPARE(file.length(), 100);
    file.close();
    QVERIFY(!file.is_open());
}

void tst_hive_file::opens_nothing_else_data()
{
    QTest::addColumn<QString>("name");
    QTest::addRow("a missing file") << u"missing"_s;
    QTest::addRow("a folder") << u"."_s;
    QTest::addRow("a pipe that nobody writes to") << u"pipe"_s;
    QTest::addRow("a link to a device") << u"device"_s;
    QTest::addRow("a link to nothing") << u"nothing"_s;
}

void tst_hive_file::opens_nothing_else()
{
    QFETCH(const QString, name);
    const QTemporaryDir folder;
    QCOMPARE(mkfifo(QFile::encodeName(folder.filePath(u"pipe"_s)).constData(), 0600), 0);
    QVERIFY(QFile::link(u"/dev/zero"_s, folder.filePath(u"device"_s)));
    QVERIFY(QFile::link(u"no such file"_s, folder.filePath(u"nothing"_s)));
    hive_file file;
    QVERIFY(!file.open(folder.filePath(name)));
    QVERIFY(!file.is_open());
}

void tst_hive_file::is_limited_by_the_reach_of_an_offset()
{
    const qint64 limit = qint64(1) << 32;
    write_file(path(), {});
    QFile content(path());
    hive_file file;
    QVERIFY(content.resize(limit));
    QVERIFY(file.open(path()));
    file.close();
    QVERIFY(content.resize(limit + 1));
    QVERIFY(!file.open(path()));
    QVERIFY(content.remove());
}

void tst_hive_file::knows_what_lies_inside_the_file()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(file.open(path()));
    QVERIFY(file.holds(0, 100));
    QVERIFY(file.holds(80, 20));
    QVERIFY(!file.holds(80, 21));
    QVERIFY(!file.holds(101, 0));
    QVERIFY(!file.holds(0xffffffff, 1));
}

void tst_hive_file::holds_nothing_while_closed()
{
    hive_file file;
    QVERIFY(!file.holds(0, 1));
    write_file(path(), QByteArray(100, 'x'));
    QVERIFY(file.open(path()));
    file.close();
    QVERIFY(!file.holds(0, 1));
    QCOMPARE(file.length(), 0);
}

void tst_hive_file::reads_bytes_in_any_order()
{
    constexpr qsizetype length = 200000;
    QByteArray content(length, '\0');
    for (qsizetype i = 0; i < length; ++i)
        content[i] = static_cast<char>(i * 31 % 251);
    write_file(path(), content);
    hive_file file;
    QVERIFY(file.open(path()));
    for (qsizetype i = 0; i < 500; ++i) {
        const qsizetype offset = i * 7919 % length;
        const qsizetype wanted = i % 5 == 0 ? 20000 : i;
        QCOMPARE(file.bytes_at(offset, wanted).toByteArray(), content.mid(offset, wanted));
    }
}

void tst_hive_file::reads_on_where_the_system_stops()
{
    write_file(path(), "0123456789"_ba);
    hive_file file;
    QVERIFY(file.open(path()));
    reading.interruptions = 3;
    reading.most_bytes = 1;
    QCOMPARE(file.bytes_at(2, 5).toByteArray(), "23456"_ba);
    QCOMPARE(reading.ends.size(), 1);
}

void tst_hive_file::reads_nothing_that_the_system_refuses()
{
    write_file(path(), "0123456789"_ba);
    hive_file file;
    QVERIFY(file.open(path()));
    reading.fails = true;
    QCOMPARE(file.bytes_at(2, 5).size(), 0);
}

void tst_hive_file::reads_numbers()
{
    write_file(path(), "\x01\x02\xfe\xff\xff"_ba);
    hive_file file;
    QVERIFY(file.open(path()));
    QCOMPARE(file.number_16(0), quint16(0x0201));
    QCOMPARE(file.number_32(1), quint32(0xfffffe02));
    QCOMPARE(file.number_16(3), quint16(0xffff));
    QCOMPARE(file.number_16(4), quint16(0)); // the file ends before
    QCOMPARE(file.number_32(2), quint32(0));
    QCOMPARE(file.number_32(qint64(1) << 32), quint32(0));
}

void tst_hive_file::tells_where_a_cell_lies()
{
    hive_builder hive;
    const hive_key &key = hive.key(u"k"_s).dword(u"v"_s, 1);
    hive.write_to(path());
    hive_file file;
    QVERIFY(file.open(path()));
    QCOMPARE(file.cell_at(key.cells().key + regf::nk::value_list), key.cells().value_list);
    QCOMPARE(hive_file::cell_of("\xff\xff\xff\xff"), 0x100000fff);
}

void tst_hive_file::reads_no_more_than_there_is()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(file.open(path()));
    QCOMPARE(file.bytes_at(90, 20).toByteArray(), QByteArray(10, 'x'));
    QCOMPARE(file.bytes_at(100, 20).size(), 0);
    QCOMPARE(file.bytes_at(qint64(1) << 40, 20).size(), 0);
    QCOMPARE(file.bytes_at(0, 100).size(), 100);
}

void tst_hive_file::reads_nothing_of_a_file_that_is_emptied()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(file.open(path()));
    QVERIFY(QFile(path()).resize(0));
    QCOMPARE(file.bytes_at(0, 100).size(), 0);
    QVERIFY(file.holds(0, 100)); // as it was when it was opened
}

void tst_hive_file::reads_the_file_that_was_opened_last()
{
    write_file(path(), QByteArray(100, 'x'));
    hive_file file;
    QVERIFY(file.open(path()));
    QCOMPARE(file.bytes_at(0, 4).toByteArray(), "xxxx"_ba);
    file.close();
    write_file(path(), QByteArray(200, 'y'));
    QVERIFY(file.open(path()));
    QCOMPARE(file.length(), 200);
    QCOMPARE(file.bytes_at(0, 4).toByteArray(), "yyyy"_ba);
}

TEST_MAIN(tst_hive_file)
#include "tst_hive_file.moc"
