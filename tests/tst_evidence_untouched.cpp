#include "files.h"
#include "host_double.h"
#include "host_process.h"
#include "machine.h"
#include "reference_run.h"
#include "result_database.h"
#include "sample_evidence.h"
#include "test_main.h"
#include "volume_snapshot.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QStandardPaths>

using namespace Qt::StringLiterals;
using namespace evidence;
using namespace test_support;

// Evidence is read and nothing else.
class tst_evidence_untouched : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void is_the_same_after_a_run();
    void is_the_same_when_it_cannot_be_written();
    void gives_the_same_rows_from_a_read_only_mount();
    void no_system_call_alters_it();
    void no_system_call_of_the_reference_host_alters_it();
    void finds_calls_that_would_alter_it_data();
    void finds_calls_that_would_alter_it();

private:
    QString trace_path() const { return m_folder.filePath(u"trace"_s); }
    QStringList tracer() const;
    void check_trace(const QStringList &trace, const QString &result_folder);
    QHash<QString, QList<QStringList>> rows_of_all_tables(const QString &database) const;

    evidence_volume m_volume;
    QTemporaryDir m_folder;
    QHash<QString, QList<QStringList>> m_rows;
};

namespace {

/// Opened in a way that may alter or make a file.
const QRegularExpression &writing_flags()
{
    static const QRegularExpression flags(u"\\bO_(WRONLY|RDWR|CREAT|TRUNC|APPEND|TMPFILE)\\b"_s);
    return flags;
}

/// Calls that alter what a path or a descriptor stands for. Reading ones are not among them.
const QRegularExpression &altering_call()
{
    static const QRegularExpression call(
        u"\\b((p?write(v|v2|64)?|f?truncate(64)?|rename(at|at2)?|unlink(at)?|rmdir|mkdir(at)?|"
        "mknod(at)?|creat|link(at)?|symlink(at)?|f?chmod(at2?)?|f?l?chown(at)?|utime|utimes|"
        "utimensat|futimesat|[fl]?setxattr(at)?|[fl]?removexattr(at)?|fallocate|sendfile|"
        "copy_file_range|splice|fsync|fdatasync|flock)\\(|"
        // Requests that set a file's flags, under each name that strace has for them.
        "ioctl\\(.*\\b((FS|EXT[234])_IOC(32)?_(SETFLAGS|FSSETXATTR|SETVERSION)|XFS_IOC_FSSETXATTR)\\b)"_s);
    return call;
}

/// The line without what is written, which may name the evidence: the run record does.
QString without_written_text(const QString &line)
{
    static const QRegularExpression writing_call(u"\\bp?write(64|v|v2)?\\(\\d+<"_s);
    return line.contains(writing_call) ? line.left(line.indexOf(u'>') + 1) : line;
}

/// The lines of a trace that show a call that could alter something below the folder.
QStringList altering_lines(const QStringList &trace, const QString &folder)
{
    const QRegularExpression place(u"[<\"]%1[/\">]"_s.arg(QRegularExpression::escape(folder)));
    QStringList found;
    for (const QString &line : trace) {
        const bool concerns_folder = without_written_text(line).contains(place);
        const bool alters = line.contains(altering_call()) || line.contains(writing_flags());
        if (concerns_folder && alters)
            found.append(line);
    }
    return found;
}

/// The trace from the first call of the plug-in on, which the process announces.
QStringList after_the_beginning(const QByteArray &trace)
{
    const QStringList lines = QString::fromLocal8Bit(trace).split(u'\n');
    const auto beginning = std::find_if(lines.cbegin(), lines.cend(), [](const QString &line) {
        return line.contains(u"write(1<"_s) && line.contains(u"\"begin"_s);
    });
    return {beginning, lines.cend()};
}

} // namespace

void tst_evidence_untouched::initTestCase()
{
    add_sample_evidence(m_volume);
    m_volume.write();
    m_volume.file(u"Program Files/App/app.exe"_s, "program", 1600000000);
    m_volume.link(u"Users/ann/AppData/Local/Packages/link"_s, m_volume.root());

    const QString folder = m_folder.filePath(u"first"_s);
    QVERIFY(extraction_process(m_volume, folder).run().completed);
    m_rows = rows_of_all_tables(database_in(folder));
}

QHash<QString, QList<QStringList>>
tst_evidence_untouched::rows_of_all_tables(const QString &database) const
{
    QHash<QString, QList<QStringList>> rows;
    for (const QString &table : all_tabs()) {
        rows[table] = rows_in(database, table);
        std::sort(rows[table].begin(), rows[table].end());
    }
    return rows;
}

void tst_evidence_untouched::is_the_same_after_a_run()
{
    const QStringList before = volume_snapshot(m_volume.root());
    QVERIFY(before.size() > 20);
    host_double host(m_volume);
    host.run();
    host.clean_up();
    QCOMPARE(volume_snapshot(m_volume.root()), before);
    QCOMPARE(rows_of_all_tables(host.database_path()), m_rows);
}

// Every file and folder denies writing, to root too.
void tst_evidence_untouched::is_the_same_when_it_cannot_be_written()
{
    QDirIterator entries(m_volume.root(),
                         QDir::AllEntries | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                         QDirIterator::Subdirectories);
    QHash<QString, QFileDevice::Permissions> permissions;
    while (entries.hasNext()) {
        const QString path = entries.next();
        permissions[path] = QFile::permissions(path);
        QVERIFY(QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    }
    const QStringList before = volume_snapshot(m_volume.root());
    const QString folder = m_folder.filePath(u"permissions"_s);
    const extraction_outcome outcome =
        extraction_process(m_volume, folder).without_privileges().run();
    QCOMPARE(volume_snapshot(m_volume.root()), before);
    for (auto entry = permissions.cbegin(); entry != permissions.cend(); ++entry)
        QVERIFY(QFile::setPermissions(entry.key(), entry.value()));
    QVERIFY(outcome.completed);
    QCOMPARE(rows_of_all_tables(database_in(folder)), m_rows);
}

void tst_evidence_untouched::gives_the_same_rows_from_a_read_only_mount()
{
    const QStringList before = volume_snapshot(m_volume.root());
    const QString folder = m_folder.filePath(u"mount"_s);
    const extraction_outcome outcome =
        extraction_process(m_volume, folder).read_only_source().run();
    if (outcome.not_permitted)
        QSKIP("This machine does not let the test mount anything");
    QVERIFY(outcome.completed);
    QCOMPARE(rows_of_all_tables(database_in(folder)), m_rows);
    QCOMPARE(volume_snapshot(m_volume.root()), before);
}

/// The command that runs another one and writes its system calls; empty without strace.
QStringList tst_evidence_untouched::tracer() const
{
    const QString strace = QStandardPaths::findExecutable(u"strace"_s);
    if (strace.isEmpty())
        return {};
    // A sanitizer's leak check cannot run under a tracer.
    return {strace,
            u"-f"_s,
            u"-y"_s,
            u"-s"_s,
            u"4096"_s,
            u"-E"_s,
            u"ASAN_OPTIONS=detect_leaks=0"_s,
            u"-o"_s,
            trace_path()};
}

void tst_evidence_untouched::check_trace(const QStringList &trace, const QString &result_folder)
{
    const QString root = m_volume.root().chopped(1);
    QVERIFY(!trace.filter(root).filter(u"SOFTWARE"_s).filter(u"openat("_s).isEmpty());
    QVERIFY(!altering_lines(trace, result_folder).isEmpty()); // the database is seen to be written
    QCOMPARE(altering_lines(trace, root).join(u'\n'), QString());
}

void tst_evidence_untouched::no_system_call_alters_it()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    if (tracer().isEmpty())
        QSKIP("strace is not installed");
    const QString folder = m_folder.filePath(u"traced"_s);
    const extraction_outcome outcome = extraction_process(m_volume, folder).under(tracer()).run();
    if (outcome.errors.contains("Operation not permitted"))
        QSKIP("This machine does not let a process be traced");
    QVERIFY2(outcome.completed, outcome.errors.constData());
    check_trace(after_the_beginning(read_file(trace_path())), folder);
}

void tst_evidence_untouched::no_system_call_of_the_reference_host_alters_it()
{
    if (const QString missing = missing_process_files(); !missing.isEmpty())
        QSKIP(qPrintable(missing));
    if (tracer().isEmpty())
        QSKIP("strace is not installed");
    const QString folder = m_folder.filePath(u"traced host"_s);
    const host_result result =
        host_process().under(tracer()).run({u"extract"_s, m_volume.root(), u"--result"_s, folder});
    const QString errors = result.errors.join(u'\n');
    if (errors.contains("Operation not permitted"_L1))
        QSKIP("This machine does not let a process be traced");
    QVERIFY2(result.exit_code == 0, qPrintable(errors));
    check_trace(QString::fromLocal8Bit(read_file(trace_path())).split(u'\n'), folder);
}

// The check of a trace can fail.
void tst_evidence_untouched::finds_calls_that_would_alter_it_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("alters");
    QTest::newRow("opened for reading")
        << u"7 openat(AT_FDCWD</w>, \"/src/a\", O_RDONLY|O_CLOEXEC) = 4</src/a>"_s << false;
    QTest::newRow("looked at") << u"7 statx(AT_FDCWD</w>, \"/src/a\", 0, STATX_ALL, {}) = 0"_s
                               << false;
    QTest::newRow("read") << u"7 read(4</src/a>, \"regf\", 4096) = 4096"_s << false;
    QTest::newRow("opened for reading and writing")
        << u"7 openat(AT_FDCWD</w>, \"/src/a\", O_RDWR) = 4</src/a>"_s << true;
    QTest::newRow("created") << u"7 openat(AT_FDCWD</w>, \"/src/b\", O_RDONLY|O_CREAT, 0600) = 4"_s
                             << true;
    QTest::newRow("written") << u"7 pwrite64(4</src/a>, \"x\", 1, 0) = 1"_s << true;
    QTest::newRow("renamed") << u"7 rename(\"/src/a\", \"/other\") = 0"_s << true;
    QTest::newRow("removed") << u"7 unlink(\"/src/a\") = 0"_s << true;
    QTest::newRow("given other times") << u"7 utimensat(4</src/a>, NULL, NULL, 0) = 0"_s << true;
    QTest::newRow("given another mode") << u"7 fchmod(4</src/a>, 0600) = 0"_s << true;
    QTest::newRow("given another mode by the newer call")
        << u"7 fchmodat2(AT_FDCWD</w>, \"/src/a\", 0600, AT_SYMLINK_NOFOLLOW) = 0"_s << true;
    QTest::newRow("given another owner") << u"7 chown(\"/src/a\", 0, 0) = 0"_s << true;
    QTest::newRow("given another owner through a descriptor")
        << u"7 fchown(4</src/a>, 0, 0) = 0"_s << true;
    QTest::newRow("given an attribute")
        << u"7 setxattr(\"/src/a\", \"user.a\", \"x\", 1, 0) = 0"_s << true;
    QTest::newRow("given an attribute below an open folder")
        << u"7 setxattrat(3</src>, \"a\", 0, \"user.a\", {value=\"x\", size=1}, 16) = 0"_s << true;
    QTest::newRow("asked for an attribute")
        << u"7 getxattr(\"/src/a\", \"user.a\", 0x7ff, 8) = -1 ENODATA"_s << false;
    QTest::newRow("given other flags")
        << u"7 ioctl(4</src/a>, FS_IOC_SETFLAGS, [FS_IMMUTABLE_FL]) = 0"_s << true;
    QTest::newRow("given other extended flags")
        << u"7 ioctl(4</src/a>, FS_IOC_FSSETXATTR, {fsx_xflags=FS_XFLAG_APPEND}) = 0"_s << true;
    QTest::newRow("asked for its flags")
        << u"7 ioctl(4</src/a>, FS_IOC_GETFLAGS, [0]) = 0"_s << false;
    QTest::newRow("truncated") << u"7 truncate(\"/src/a\", 0) = 0"_s << true;
    QTest::newRow("linked to from elsewhere") << u"7 link(\"/src/a\", \"/other\") = 0"_s << true;
    QTest::newRow("linked into it") << u"7 link(\"/other\", \"/src/b\") = 0"_s << true;
    QTest::newRow("a symbolic link made in it")
        << u"7 symlink(\"/other\", \"/src/b\") = 0"_s << true;
    QTest::newRow("a folder made in it") << u"7 mkdir(\"/src/b\", 0777) = 0"_s << true;
    QTest::newRow("a folder made below an open folder")
        << u"7 mkdirat(3</src>, \"b\", 0777) = 0"_s << true;
    QTest::newRow("a pipe made in it") << u"7 mknod(\"/src/b\", S_IFIFO|0600) = 0"_s << true;
    QTest::newRow("renamed into it") << u"7 rename(\"/other\", \"/src/b\") = 0"_s << true;
    QTest::newRow("another folder written") << u"7 pwrite64(4</dst/a>, \"x\", 1, 0) = 1"_s << false;
}

void tst_evidence_untouched::finds_calls_that_would_alter_it()
{
    QFETCH(const QString, line);
    QFETCH(const bool, alters);
    QCOMPARE(altering_lines({line}, u"/src"_s).size(), alters ? 1 : 0);
}

TEST_MAIN(tst_evidence_untouched)
#include "tst_evidence_untouched.moc"
