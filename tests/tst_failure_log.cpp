#include "failure_log.h"

#include "log_line.h"
#include "test_main.h"

#include <QLoggingCategory>

using namespace Qt::StringLiterals;
using namespace test_support;

namespace {

/// What comes through to the handler that was there before.
QStringList passed_on;

void note(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString &text)
{
    passed_on.append(text);
}

void send(const QString &text)
{
    qDebug("%s", qUtf8Printable(text));
}

/// Sends messages as a plug-in logs them.
void log(const QStringList &messages)
{
    for (const QString &message : messages)
        send(u"[10:20:30]"_s + log_line(u"caller"_s, message));
}

} // namespace

class tst_failure_log : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void tells_failures_from_other_messages_data();
    void tells_failures_from_other_messages();
    void names_the_first_failure_with_its_reason_data();
    void names_the_first_failure_with_its_reason();
    void keeps_early_ends_data();
    void keeps_early_ends();
    void keeps_what_is_unread_data();
    void keeps_what_is_unread();
    void passes_other_texts_on_data();
    void passes_other_texts_on();
    void listens_while_it_lives();
    void hears_where_debug_messages_are_switched_off();

private:
    QtMessageHandler m_handler = nullptr;
};

void tst_failure_log::init()
{
    passed_on.clear();
    m_handler = qInstallMessageHandler(note);
}

void tst_failure_log::cleanup()
{
    qInstallMessageHandler(m_handler);
}

void tst_failure_log::tells_failures_from_other_messages_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("count");
    const auto add_row = [](const char *name, const QString &message, int count) {
        QTest::newRow(name) << message << count;
    };
    add_row("an insert", u"[a]query_insert -----FAILED----- parts/r/x.sqlite"_s, 1);
    add_row("a database", u"[a]Destination Db opening failed "_s, 1);
    add_row("a start", u"[a]---STARTS---"_s, 0);
    add_row("an early end", u"[a]---ENDS EARLY--- /v/FAILED, key K: why"_s, 0);
    add_row("a path that contains the one word", u"[a] /v/FAILED"_s, 0);
    add_row("a path that contains the other words", u"[a] /v/opening failed"_s, 0);
    add_row("no text", u""_s, 0);
}

void tst_failure_log::tells_failures_from_other_messages()
{
    QFETCH(const QString, message);
    QFETCH(const int, count);
    const failure_log failures;
    log({message});
    QCOMPARE(failures.count(), count);
    log({u"reason"_s, message});
    QCOMPARE(failures.count(), 2 * count);
}

void tst_failure_log::names_the_first_failure_with_its_reason_data()
{
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<QString>("first");
    const auto add_row = [](const char *name, const QStringList &messages, const QString &first) {
        QTest::newRow(name) << messages << first;
    };
    add_row("none", {u"START"_s, u"END"_s}, {});
    add_row("a failure alone", {u" FAILED "_s}, u"FAILED"_s);
    add_row("a failure and its reason", {u"START"_s, u"FAILED "_s, u" disk is full "_s, u"END"_s},
            u"FAILED: disk is full"_s);
    add_row("caller and command between",
            {u"FAILED"_s, u" CALLER FUNCTION : f"_s, u" command : insert"_s, u"locked"_s},
            u"FAILED: locked"_s);
    add_row("two failures", {u"1 FAILED"_s, u"locked"_s, u"2 FAILED"_s, u"full"_s},
            u"1 FAILED: locked"_s);
    add_row("two failures without a reason between",
            {u"1 FAILED"_s, u"command"_s, u"2 FAILED"_s, u"full"_s}, u"1 FAILED: 2 FAILED"_s);
}

void tst_failure_log::names_the_first_failure_with_its_reason()
{
    QFETCH(const QStringList, messages);
    const failure_log failures;
    log(messages);
    QTEST(failures.first(), "first");
}

void tst_failure_log::keeps_early_ends_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QStringList>("early_ends");
    const auto add_row = [](const char *name, const QString &message, const QStringList &ends) {
        QTest::newRow(name) << message << ends;
    };
    const auto told = u"/v/SOFTWARE, key K: why"_s;
    add_row("an early end", u"[a]---ENDS EARLY--- /v/SOFTWARE, key K: why"_s, {told});
    add_row("without a slash", u"[a]---ENDS EARLY--- hive, key K: why"_s, {u"hive, key K: why"_s});
    add_row("with nothing before", u"]---ENDS EARLY--- x"_s, {u"x"_s});
    add_row("within a path", u"[a] /v/x]---ENDS EARLY--- y"_s, {});
    add_row("within a path that begins the message", u"/]---ENDS EARLY--- y"_s, {});
    add_row("another message", u"[a]---STARTS---"_s, {});
}

void tst_failure_log::keeps_early_ends()
{
    QFETCH(const QString, message);
    QFETCH(const QStringList, early_ends);
    const failure_log failures;
    log({message});
    QCOMPARE(failures.early_ends(), early_ends);
    log({u"[a]---STARTS---"_s, message});
    QCOMPARE(failures.early_ends(), early_ends + early_ends);
    QCOMPARE(failures.unread(), QStringList());
}

void tst_failure_log::keeps_what_is_unread_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QStringList>("unread");
    QTest::newRow("something unread")
        << u"[a]---UNREAD--- /v/x: FAILED"_s << QStringList{u"/v/x: FAILED"_s};
    QTest::newRow("with nothing before") << u"]---UNREAD--- x"_s << QStringList{u"x"_s};
    QTest::newRow("within a path") << u"[a] /v/x]---UNREAD--- y"_s << QStringList();
    QTest::newRow("another message") << u"[a]---STARTS---"_s << QStringList();
}

void tst_failure_log::keeps_what_is_unread()
{
    QFETCH(const QString, message);
    QFETCH(const QStringList, unread);
    const failure_log failures;
    log({message});
    QCOMPARE(failures.unread(), unread);
    QCOMPARE(failures.early_ends(), QStringList());
    QCOMPARE(failures.count(), 0);
}

void tst_failure_log::passes_other_texts_on_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("any text") << u"FAILED"_s;
    QTest::newRow("a line of another tool")
        << u"[t][e][Other][caller"_s + message_mark + u"FAILED"_s;
    QTest::newRow("a line without a message")
        << u"[t]"_s + log_line(u"FAILED"_s, {}).section(message_mark, 0, 0) + u']';
}

void tst_failure_log::passes_other_texts_on()
{
    QFETCH(const QString, text);
    const failure_log failures;
    send(text);
    QCOMPARE(passed_on, QStringList{text});
    QCOMPARE(failures.count(), 0);
}

void tst_failure_log::listens_while_it_lives()
{
    {
        const failure_log failures;
        log({u"FAILED"_s});
        QCOMPARE(failures.count(), 1);
    }
    QCOMPARE(passed_on, QStringList());
    log({u"FAILED"_s});
    QCOMPARE(passed_on.size(), 1);
    QCOMPARE(failure_log().count(), 0);
}

void tst_failure_log::hears_where_debug_messages_are_switched_off()
{
    QLoggingCategory::defaultCategory()->setEnabled(QtDebugMsg, false);
    const failure_log failures;
    log({u"FAILED"_s});
    QCOMPARE(failures.count(), 1);
}

TEST_MAIN(tst_failure_log)
#include "tst_failure_log.moc"
