#include "files.h"
#include "hive_builder.h"
#include "hive_pool.h"
#include "test_main.h"

#include <QTemporaryDir>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace evidence;

// Hives that stay open between walks.
class tst_hive_pool : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void opens_a_hive_once();
    void starts_a_walk_with_each_opening();
    void tries_again_what_could_not_be_opened();
    void closes_a_hive();
    void closes_the_one_that_was_not_asked_for_the_longest();
    void keeps_one_that_is_longer_than_the_limit();
    void keeps_no_more_than_a_number_of_hives();
    void closes_the_others_when_no_more_files_can_be_opened();

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    qint64 m_length = 0; ///< of each hive
};

void tst_hive_pool::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    hive_builder hive;
    hive.root().text(u"value"_s, u"text"_s);
    m_length = hive.bytes().size();
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
        hive.write_to(path(name));
}

void tst_hive_pool::opens_a_hive_once()
{
    hive_pool hives;
    const hive_h *first = hives.open(path(u"a"_s))->handle();
    hives.open(path(u"b"_s));
    // The file is not looked at again.
    write_file(path(u"a"_s), "no hive");
    QCOMPARE(hives.open(path(u"a"_s))->handle(), first);
    QCOMPARE(hives.count(), 2);
}

void tst_hive_pool::starts_a_walk_with_each_opening()
{
    hive_pool hives;
    for (int walk = 0; walk < 2; ++walk) {
        guarded_hive *hive = hives.open(path(u"a"_s));
        QVERIFY(!hive->is_walk_over());
        while (!hive->is_walk_over())
            hive->values(hive->root());
    }
}

void tst_hive_pool::tries_again_what_could_not_be_opened()
{
    hive_pool hives;
    const QByteArray bytes = read_file(path(u"a"_s));
    write_file(path(u"a"_s), "no hive");
    QCOMPARE(hives.open(path(u"a"_s)), nullptr);
    QCOMPARE(hives.open(path(u"none"_s)), nullptr);
    QCOMPARE(hives.count(), 0);
    write_file(path(u"a"_s), bytes);
    QVERIFY(hives.open(path(u"a"_s)) != nullptr);
}

void tst_hive_pool::closes_a_hive()
{
    hive_pool hives;
    hives.open(path(u"a"_s));
    hives.close(path(u"b"_s));
    QCOMPARE(hives.count(), 1);
    hives.close(path(u"a"_s));
    QCOMPARE(hives.count(), 0);
}

void tst_hive_pool::closes_the_one_that_was_not_asked_for_the_longest()
{
    hive_pool hives({2 * m_length, 64});
    for (const QString &name : {u"a"_s, u"b"_s, u"a"_s, u"c"_s})
        hives.open(path(name));
    QCOMPARE(hives.count(), 2);
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
        write_file(path(name), "no hive");
    QVERIFY(hives.open(path(u"a"_s)) != nullptr);
    QVERIFY(hives.open(path(u"c"_s)) != nullptr);
    QCOMPARE(hives.open(path(u"b"_s)), nullptr);
}

void tst_hive_pool::keeps_one_that_is_longer_than_the_limit()
{
    hive_pool hives({m_length - 1, 64});
    QVERIFY(hives.open(path(u"a"_s)) != nullptr);
    QCOMPARE(hives.count(), 1);
    QVERIFY(hives.open(path(u"b"_s)) != nullptr);
    QCOMPARE(hives.count(), 1);
}

void tst_hive_pool::keeps_no_more_than_a_number_of_hives()
{
    hive_pool hives({m_length * 100, 2});
    for (const QString &name : {u"a"_s, u"b"_s, u"c"_s, u"a"_s})
        QVERIFY(hives.open(path(name)) != nullptr);
    QCOMPARE(hives.count(), 2);
    QVERIFY(hive_pool::limit().hives <= 64); // a process may often open 256 files
}

namespace {

/// Lets this process open `count` more files while it lives.
class few_files
{
public:
    explicit few_files(rlim_t count)
    {
        getrlimit(RLIMIT_NOFILE, &m_former);
        const int lowest_free = dup(STDOUT_FILENO);
        ::close(lowest_free);
        const rlimit few{static_cast<rlim_t>(lowest_free) + count, m_former.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~few_files() { setrlimit(RLIMIT_NOFILE, &m_former); }
    Q_DISABLE_COPY_MOVE(few_files)

private:
    rlimit m_former{};
};

} // namespace

// A hive takes one open file, and a second one while it is opened.
void tst_hive_pool::closes_the_others_when_no_more_files_can_be_opened()
{
    hive_pool hives;
    const few_files limit(3);
    QVERIFY(hives.open(path(u"a"_s)) != nullptr);
    QVERIFY(hives.open(path(u"b"_s)) != nullptr);
    QCOMPARE(hives.count(), 2);
    QVERIFY(hives.open(path(u"c"_s)) != nullptr);
    QCOMPARE(hives.count(), 1);
    QVERIFY(hives.open(path(u"none"_s)) == nullptr);
    QCOMPARE(hives.count(), 1);
}

TEST_MAIN(tst_hive_pool)
#include "tst_hive_pool.moc"
