#include "file_hashes.h"

#include "evidence_volume.h"
#include "files.h"
#include "sha256.h"
#include "test_main.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using evidence::evidence_volume;
using evidence::write_file;

// The SHA-256 of the files that a run reads, computed beside the run.
class tst_file_hashes : public QObject
{
    Q_OBJECT

private slots:
    void are_those_of_the_content_data();
    void are_those_of_the_content();
    void are_none_of_what_cannot_be_read();
    void are_computed_for_both_looks_data();
    void are_computed_for_both_looks();
    void are_left_out_of_looks_that_failed();
    void are_left_out_of_files_that_are_no_hives();
    void are_given_up_when_cancelled();
    void are_not_waited_for_at_the_end();
};

namespace {

QString hash_by_qt(const QByteArray &content)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
}

/// A volume with some files of different lengths.
struct hashed_volume
{
    evidence_volume volume;
    QList<read_file> files;
    QStringList expected;

    explicit hashed_volume(int count)
    {
        for (int i = 0; i < count; ++i) {
            const QByteArray content(1 + i * 1'500'000, static_cast<char>('a' + i));
            volume.file(QString::number(i), content);
            files.append({QString::number(i), {}, {}, {}, {}});
            expected.append(hash_by_qt(content));
        }
        volume.write();
    }

    QStringList hashes(file_hashes::look look) const
    {
        QStringList found;
        for (const read_file &file : files)
            found.append((file.*look).sha256);
        return found;
    }

    source_volume source() const { return source_volume(volume.root()); }
};

bool never()
{
    return false;
}

} // namespace

void tst_file_hashes::are_those_of_the_content_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a few bytes") << QByteArray("regf");
    QTest::newRow("one part") << QByteArray(1 << 20, 'x');
    QTest::newRow("a byte more") << QByteArray((1 << 20) + 1, 'x');
    QTest::newRow("several parts") << QByteArray(5'000'000, '\0');
}

void tst_file_hashes::are_those_of_the_content()
{
    QFETCH(const QByteArray, content);
    const QTemporaryDir folder;
    write_file(folder.filePath(u"file"_s), content);
    QCOMPARE(sha256_of(folder.filePath(u"file"_s)), hash_by_qt(content));
}

void tst_file_hashes::are_none_of_what_cannot_be_read()
{
    const QTemporaryDir folder;
    QCOMPARE(sha256_of(folder.filePath(u"absent"_s)), QString());
    QCOMPARE(sha256_of(folder.path()), QString());
    QFile file(folder.filePath(u"file"_s));
    QVERIFY(file.open(QIODevice::WriteOnly)); // not for reading
    QCOMPARE(sha256_of(file, never), QString());
}

void tst_file_hashes::are_computed_for_both_looks_data()
{
    QTest::addColumn<int>("threads");
    QTest::newRow("one thread") << 1;
    QTest::newRow("two threads") << 2;
    QTest::newRow("more threads than files") << 8;
}

void tst_file_hashes::are_computed_for_both_looks()
{
    QFETCH(const int, threads);
    hashed_volume volume(4);
    file_hashes hashes;
    hashes.begin(volume.source(), volume.files, &read_file::before, threads);
    hashes.finish(volume.files, never);
    QCOMPARE(volume.hashes(&read_file::before), volume.expected);
    QCOMPARE(volume.hashes(&read_file::after), QStringList(4, QString()));
    hashes.begin(volume.source(), volume.files, &read_file::after, threads);
    hashes.finish(volume.files, never);
    QCOMPARE(volume.hashes(&read_file::after), volume.expected);
    QCOMPARE(hashes.count(), 8);
    QVERIFY(hashes.seconds() > 0 && hashes.seconds_waited() > 0);
}

void tst_file_hashes::are_left_out_of_looks_that_failed()
{
    hashed_volume volume(2);
    volume.files.first().before.failure = u"a link leads out of the source"_s;
    file_hashes hashes;
    hashes.begin(volume.source(), volume.files, &read_file::before, 1);
    hashes.finish(volume.files, never);
    QCOMPARE(volume.hashes(&read_file::before), (QStringList{QString(), volume.expected.at(1)}));
    QCOMPARE(hashes.count(), 1);
    QVERIFY(!hashes.is_given_up());
}

// Of such a file the run reads no more than the header.
void tst_file_hashes::are_left_out_of_files_that_are_no_hives()
{
    hashed_volume volume(2);
    volume.files.last().state = u"unreadable"_s;
    file_hashes hashes;
    hashes.begin(volume.source(), volume.files, &read_file::before, 1);
    hashes.finish(volume.files, never);
    QCOMPARE(volume.hashes(&read_file::before), (QStringList{volume.expected.at(0), QString()}));
}

// What is cancelled once stays so: no later look is hashed.
void tst_file_hashes::are_given_up_when_cancelled()
{
    evidence_volume volume;
    volume.write();
    QFile large(volume.path(u"large"_s));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(64) << 30));
    QList<read_file> files{{u"large"_s, {}, {}, {}, {}}};
    const source_volume source(volume.root());
    file_hashes hashes;
    for (const file_hashes::look look : {&read_file::before, &read_file::after}) {
        hashes.begin(source, files, look, 1);
        hashes.finish(files, [] { return true; });
        QCOMPARE((files.first().*look).sha256, QString());
        QVERIFY(hashes.is_given_up());
    }
    QCOMPARE(hashes.count(), 0);
}

// Hashing 64 GiB would take minutes.
void tst_file_hashes::are_not_waited_for_at_the_end()
{
    evidence_volume volume;
    volume.write();
    QFile large(volume.path(u"large"_s));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(64) << 30));
    file_hashes hashes;
    hashes.begin(source_volume(volume.root()), {{u"large"_s, {}, {}, {}, {}}}, &read_file::before,
                 1);
}

TEST_MAIN(tst_file_hashes)
#include "tst_file_hashes.moc"
