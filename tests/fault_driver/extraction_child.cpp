#include "extraction_process.h"
#include "host_double.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#ifdef Q_OS_LINUX
#include <cerrno>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#endif

// Runs all tabs over a volume and prints the plug-in's signals, one a line, each at once, and in
// the end what the run took. The options let the run fail; see extraction_process.h.

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

namespace {

void limit(decltype(RLIMIT_AS) resource, quint64 bytes)
{
    const rlimit limits = {bytes, bytes};
    setrlimit(resource, &limits);
}

quint64 mapped_bytes()
{
    QFile file(u"/proc/self/statm"_s);
    const quint64 page_size = static_cast<quint64>(sysconf(_SC_PAGESIZE));
    return file.open(QIODevice::ReadOnly)
               ? file.readLine().split(' ').first().toULongLong() * page_size
               : 0;
}

void set_limits(const QCommandLineParser &options)
{
    std::signal(SIGXFSZ, SIG_IGN);
    if (options.isSet(u"file-size-limit"_s))
        limit(RLIMIT_FSIZE, options.value(u"file-size-limit"_s).toULongLong());
    if (options.isSet(u"memory-limit"_s))
        limit(RLIMIT_AS, mapped_bytes() + options.value(u"memory-limit"_s).toULongLong());
}

void kill_self(int /*signal_number*/)
{
    kill(getpid(), SIGKILL);
}

void kill_after(const QString &microseconds)
{
    if (microseconds.isEmpty())
        return;
    std::signal(SIGALRM, kill_self);
    constexpr qint64 us_per_s = 1000000;
    const qint64 us = std::max(qint64(1), microseconds.toLongLong());
    itimerval timer = {};
    timer.it_value.tv_sec = static_cast<time_t>(us / us_per_s);
    timer.it_value.tv_usec = static_cast<suseconds_t>(us % us_per_s);
    setitimer(ITIMER_REAL, &timer, nullptr);
}

/// Whether the folder could be mounted read-only over itself, in this process's own view.
bool mount_read_only(const QByteArray &folder)
{
#ifdef Q_OS_LINUX
    const char *path = folder.constData();
    // Who is not root may mount in a user namespace, but lift nothing that the file system forbids.
    const bool has_own_view =
        unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
    constexpr unsigned long read_only =
        MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID | MS_NODEV | MS_NOEXEC;
    const bool is_mounted = has_own_view &&
                            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                            mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                            mount(nullptr, path, nullptr, read_only, nullptr) == 0;
    return is_mounted && open((folder + "probe").constData(), O_CREAT | O_WRONLY, 0600) < 0 &&
           errno == EROFS;
#else
    Q_UNUSED(folder)
    return false;
#endif
}

void print(const QByteArray &line)
{
    std::fputs((line + '\n').constData(), stdout);
    std::fflush(stdout);
}

/// The most memory that was held at once.
qint64 peak_kib(const rusage &usage)
{
#ifdef Q_OS_DARWIN
    return usage.ru_maxrss / 1024;
#else
    // What getrusage() gives includes what the parent held before this program was executed.
    QFile file(u"/proc/self/status"_s);
    const QByteArray status = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const qsizetype label = status.indexOf("VmHWM:");
    const QByteArray kib = status.mid(label).simplified().split(' ').value(1);
    return label < 0 ? usage.ru_maxrss : kib.toLongLong();
#endif
}

void print_end(qint64 microseconds)
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const qint64 cpu_ms = (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000 +
                          (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1000;
    const disk_counts counts = counted_on_disk();
    QByteArray line = "done";
    for (const qint64 number : {qint64(counts.steps), qint64(counts.writes), qint64(counts.opens),
                                microseconds, cpu_ms, peak_kib(usage), qint64(counts.waited_us)})
        line += ' ' + QByteArray::number(number);
    print(line);
}

void add_options(QCommandLineParser &parser)
{
    for (const char *name : {"source", "result", "account", "tab", "log", "fault", "at",
                             "file-size-limit", "memory-limit", "kill-after"})
        parser.addOption({QString::fromLatin1(name), {}, u"value"_s});
    parser.addOption({u"read-only-source"_s, {}});
    parser.addOption({u"clear"_s, {}});
}

void hand_over(const QCommandLineParser &options, host_double &host)
{
    host.settings.result_folder = options.value(u"result"_s);
    const QStringList accounts = options.values(u"account"_s);
    for (const QString &account : accounts)
        host.settings.source.system_account_list.append({account, {}});
    if (options.isSet(u"tab"_s))
        host.settings.tabs = options.values(u"tab"_s);
    host.settings.clear_tables = options.isSet(u"clear"_s);
    if (options.isSet(u"log"_s)) {
        host.settings.general.debug_mode_status = true;
        host.settings.general.debug_print_in_file = true;
        host.settings.general.debug_file_path = options.value(u"log"_s);
    }
}

void begin_faults(const QCommandLineParser &options)
{
    watch_disk((options.value(u"result"_s) + u'/').toLocal8Bit().constData(),
               options.value(u"source"_s).toLocal8Bit().constData(),
               static_cast<disk_fault>(options.value(u"fault"_s).toInt()),
               options.value(u"at"_s).toLongLong());
    set_limits(options);
    kill_after(options.value(u"kill-after"_s));
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    const QApplication application(argc, argv);
    QCommandLineParser options;
    add_options(options);
    options.process(application);

    const QString source = options.value(u"source"_s);
    if (options.isSet(u"read-only-source"_s) && !mount_read_only(source.toLocal8Bit()))
        return not_permitted_exit_code;

    const evidence_volume volume(source);
    host_double host(volume);
    hand_over(options, host);
    host.on_event([](const QString &event) { print(event.toLatin1()); });
    begin_faults(options);
    print("begin");
    QElapsedTimer timer;
    timer.start();
    host.run();
    print_end(timer.nsecsElapsed() / 1000);
    return 0;
}
