#include "application_keys.h"
#include "evidence_volume.h"
#include "files.h"
#include "guarded_hive.h"
#include "hive_precheck.h"
#include "host_double.h"
#include "log_capture.h"
#include "parse_hidden_desktop_icons.h"
#include "parse_installed_applications.h"
#include "parse_user_assist.h"
#include "plugin_tabs.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "windows_installed_applications.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <hivex.h>
#include <memory>
#include <vector>

#ifdef __linux__
#include <array>
#include <dlfcn.h>
#include <sys/inotify.h>
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

/// A call of hivex_open().
struct hive_opening
{
    QString path;
    int flags;
};

QList<hive_opening> openings;

/// The handles that were not closed.
QSet<hive_h *> open_hives;

/// How a file was opened, by whomever, until it was closed again.
struct file_use
{
    bool reading = false;
    bool writing = false;
};

} // namespace

#ifdef __linux__

/// Takes the place of the library's own operation in this program, notes the call and passes it on.
extern "C" __attribute__((visibility("default"))) hive_h *hivex_open(const char *filename,
                                                                     int flags)
{
    using open_operation = hive_h *(*)(const char *, int);
    static const auto open = reinterpret_cast<open_operation>(dlsym(RTLD_NEXT, "hivex_open"));
    openings.append({QFile::decodeName(filename), flags});
    hive_h *const hive = open(filename, flags);
    if (hive != nullptr)
        open_hives.insert(hive);
    return hive;
}

/// The same of its counterpart.
extern "C" __attribute__((visibility("default"))) int hivex_close(hive_h *hive)
{
    using close_operation = int (*)(hive_h *);
    static const auto close = reinterpret_cast<close_operation>(dlsym(RTLD_NEXT, "hivex_close"));
    open_hives.remove(hive);
    return close(hive);
}

namespace {

constexpr bool opens_are_seen = true;

/// Sees how a file is opened from now on.
class file_watch
{
public:
    explicit file_watch(const QString &path)
    {
        inotify_add_watch(m_events, QFile::encodeName(path).constData(), IN_CLOSE);
    }
    ~file_watch() { close(m_events); }
    file_watch(const file_watch &) = delete;
    file_watch &operator=(const file_watch &) = delete;

    file_use use() const
    {
        file_use use;
        std::array<inotify_event, 64> events; // without names: it is no folder that is watched
        ssize_t size = 0;
        while ((size = read(m_events, events.data(), sizeof events)) > 0) {
            for (size_t i = 0; i < static_cast<size_t>(size) / sizeof(inotify_event); ++i) {
                use.reading |= (events.at(i).mask & IN_CLOSE_NOWRITE) != 0;
                use.writing |= (events.at(i).mask & IN_CLOSE_WRITE) != 0;
            }
        }
        return use;
    }

private:
    int m_events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
};

} // namespace

#else

namespace {

constexpr bool opens_are_seen = false;

class file_watch
{
public:
    explicit file_watch(const QString & /*path*/) {}
    static file_use use() { return {}; }
};

} // namespace

#endif

// libhivex is asked to open every hive as if for writing and nothing else, so that it reads the
// file into memory; the file itself is opened for reading alone, by libhivex and by everybody else.
class tst_hive_opening : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void sees_other_flags();
    void sees_a_file_opened_for_writing();
    void reads_a_hive_into_memory_data();
    void reads_a_hive_into_memory();
    void closes_a_hive_with_its_walk();
    void closes_a_hive_where_another_is_opened();
    void reads_every_hive_of_a_run_into_memory();
    void opens_each_hive_once_when_asked_to_keep_them_open();
    void closes_kept_hives_where_a_run_is_cancelled();
    void closes_kept_hives_behind_their_last_tab();
};

namespace {

/// HIVEX_OPEN_WRITE, without HIVEX_OPEN_UNSAFE or any other.
constexpr int read_into_memory = 4;

using operation = void (*)(const QString &hive_path);

struct named_operation
{
    const char *name;
    operation run;
};

template<typename walker>
void walk(const QString &hive_path)
{
    walker().start_registry_parse(hive_path, u"Windows"_s, true);
    walker().start_registry_parse(hive_path, u"Windows"_s, false);
}

constexpr named_operation operations[] = {
    {"the walkers' base", walk<registry>},
    {"the walker of applications", walk<parse_installed_applications>},
    {"the walker of desktop icons", walk<parse_hidden_desktop_icons>},
    {"the walker of UserAssist", walk<parse_user_assist>},
    {"the guarded reader", [](const QString &path) { guarded_hive().open(path); }},
};

/// The flags of all openings of a hive, each once.
QSet<int> flags_for(const QString &path)
{
    QSet<int> flags;
    for (const hive_opening &opening : std::as_const(openings)) {
        if (opening.path == path)
            flags.insert(opening.flags);
    }
    return flags;
}

} // namespace

void tst_hive_opening::initTestCase()
{
    if (!opens_are_seen)
        QSKIP("Calls of libraries are replaced, and files watched, on Linux only");
}

void tst_hive_opening::init()
{
    openings.clear();
    open_hives.clear();
}

void tst_hive_opening::sees_other_flags()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    hive_builder().write_to(path);
    for (const int flags : {0, HIVEX_OPEN_UNSAFE | HIVEX_OPEN_WRITE}) {
        hive_h *const hive = hivex_open(QFile::encodeName(path).constData(), flags);
        QVERIFY(hive != nullptr);
        QCOMPARE(open_hives, QSet<hive_h *>{hive});
        hivex_close(hive);
    }
    QCOMPARE(flags_for(path), (QSet<int>{0, 12}));
}

void tst_hive_opening::sees_a_file_opened_for_writing()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"file"_s));
    write_file(file.fileName(), {});
    const file_watch watch(file.fileName());
    QVERIFY(!watch.use().reading);
    QVERIFY(file.open(QIODevice::ReadOnly));
    file.close();
    const file_use reading = watch.use();
    QVERIFY(reading.reading);
    QVERIFY(!reading.writing);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.close();
    QVERIFY(watch.use().writing);
}

void tst_hive_opening::reads_a_hive_into_memory_data()
{
    QTest::addColumn<operation>("run");
    QTest::addColumn<QByteArray>("content");
    hive_builder hive;
    hive.key(u"Windows\\a"_s).dword(u"v"_s, 1);
    const QByteArray intact = hive.bytes();
    for (const named_operation &named : operations) {
        QTest::addRow("%s, of an intact hive", named.name) << named.run << intact;
        QTest::addRow("%s, of a hive that is cut off", named.name)
            << named.run << intact.first(6000);
        QTest::addRow("%s, of another file", named.name) << named.run << "text"_ba;
    }
}

void tst_hive_opening::reads_a_hive_into_memory()
{
    QFETCH(const operation, run);
    QFETCH(const QByteArray, content);
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    write_file(path, content);
    const file_watch watch(path);
    run(path);
    const file_use use = watch.use();
    QCOMPARE(flags_for(path), QSet<int>{read_into_memory});
    QVERIFY(use.reading);
    QVERIFY(!use.writing);
    QVERIFY(open_hives.isEmpty());
}

void tst_hive_opening::closes_a_hive_with_its_walk()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    hive_builder().write_to(path);
    registry walker;
    QCOMPARE(walker.start_registry_parse(path, u"\\"_s, true), 0);
    QCOMPARE(openings.size(), 1);
    QVERIFY(open_hives.isEmpty());
}

void tst_hive_opening::closes_a_hive_where_another_is_opened()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"hive"_s);
    hive_builder().write_to(path);
    {
        guarded_hive hive;
        QVERIFY(hive.open(path));
        QVERIFY(hive.open(path));
        QCOMPARE(open_hives, QSet<hive_h *>{hive.handle()});
    }
    QCOMPARE(openings.size(), 2);
    QVERIFY(open_hives.isEmpty());
}

// All tabs are filled, and the host looks at the volume before and after.
void tst_hive_opening::reads_every_hive_of_a_run_into_memory()
{
    const log_capture log;
    evidence_volume volume;
    add_sample_evidence(volume);
    volume.write();
    const QStringList hives{volume.software_path(), volume.ntuser_path(u"ann"_s),
                            volume.ntuser_path(u"bob"_s)};
    std::vector<std::unique_ptr<file_watch>> watches;
    for (const QString &hive : hives)
        watches.push_back(std::make_unique<file_watch>(hive));

    const source_volume source(volume.root());
    precheck_warnings(source, software_hive_to_read(source), volume.accounts(), plugin_tabs());
    host_double(volume).run();
    QVERIFY(!openings.isEmpty());
    QVERIFY(open_hives.isEmpty());

    for (const hive_opening &opening : std::as_const(openings))
        QCOMPARE(opening.flags, read_into_memory);
    for (const QString &hive : hives)
        QCOMPARE(flags_for(hive), QSet<int>{read_into_memory});
    for (const auto &watch : watches) {
        const file_use use = watch->use();
        QVERIFY(use.reading);
        QVERIFY(!use.writing);
    }
}

namespace {

/// A host that asks for hives to be kept open, in front of the sample evidence.
struct keeping_host
{
    evidence_volume volume;
    std::optional<host_double> host;

    keeping_host()
    {
        add_sample_evidence(volume);
        volume.write();
        host.emplace(volume, row_progress::every_row);
        host->plugin().setProperty("extraction_options", QVariantMap{{u"keep_hives_open"_s, true}});
    }
};

} // namespace

void tst_hive_opening::opens_each_hive_once_when_asked_to_keep_them_open()
{
    keeping_host keeping;
    keeping.host->run();
    QCOMPARE(openings.size(), 3);
    QCOMPARE(flags_for(keeping.volume.software_path()), QSet<int>{read_into_memory});
    QVERIFY(open_hives.isEmpty());
}

void tst_hive_opening::closes_kept_hives_where_a_run_is_cancelled()
{
    for (int row = 1; row < 8 * int(sample_row_count); ++row) {
        keeping_host keeping;
        keeping.host->cancel_at_row(row);
        keeping.host->run();
        QVERIFY(open_hives.isEmpty());
    }
}

// The software hive goes before the first user's hive comes, and one user's before the next.
void tst_hive_opening::closes_kept_hives_behind_their_last_tab()
{
    keeping_host keeping;
    keeping.host->settings.tabs = {u"install_apps_64"_s, u"install_apps_32"_s, u"uninstall_apps"_s};
    qsizetype most = 0;
    keeping.host->on_event([&](const QString &) { most = std::max(most, open_hives.size()); });
    keeping.host->run();
    QCOMPARE(most, 1);
    QCOMPARE(openings.size(), 3);
}

TEST_MAIN(tst_hive_opening)
#include "tst_hive_opening.moc"
