#include "console.h"
#include "progress_display.h"
#include "test_main.h"

using namespace Qt::StringLiterals;

class tst_host_console : public QObject
{
    Q_OBJECT

private slots:
    void escapes_what_could_steer_a_terminal_data();
    void escapes_what_could_steer_a_terminal();
    void words_the_progress_data();
    void words_the_progress();
};

void tst_host_console::escapes_what_could_steer_a_terminal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("plain text stays") << u"Users/Ann Lee"_s << u"Users/Ann Lee"_s;
    QTest::newRow("letters of all scripts stay") << u"Zoë Иван 安娜"_s << u"Zoë Иван 安娜"_s;
    QTest::newRow("characters of two code units stay") << u"\U0001F600!"_s << u"\U0001F600!"_s;
    QTest::newRow("line ends cannot fake a line") << u"a\r\nb"_s << u"a\\x0d\\x0ab"_s;
    QTest::newRow("terminal escapes are shown") << u"\x1b[31m"_s << u"\\x1b[31m"_s;
    QTest::newRow("NUL and DEL are shown") << QString(QChar::Null) + u'\x7f' << u"\\x00\\x7f"_s;
    QTest::newRow("C1 controls are shown") << u"\x9b"
                                              "2J"_s
                                           << u"\\x9b2J"_s;
    QTest::newRow("text direction cannot be turned") << u"exe.\u202etxt"_s << u"exe.\\u202etxt"_s;
    QTest::newRow("tags beyond the first plane are shown")
        << u"a\U000E0041b"_s << u"a\\U000e0041b"_s;
    QTest::newRow("line and paragraph separators are shown")
        << u"\u2028\u2029"_s << u"\\u2028\\u2029"_s;
    QTest::newRow("high surrogate alone is shown") << QString(QChar(0xd83d)) << u"\\ud83d"_s;
    QTest::newRow("low surrogate before a letter is shown")
        << QString(QChar(0xde00)) + u'a' << u"\\ude00a"_s;
}

void tst_host_console::escapes_what_could_steer_a_terminal()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QCOMPARE(printable(text), shown);
}

void tst_host_console::words_the_progress_data()
{
    QTest::addColumn<qint64>("elapsed_ms");
    QTest::addColumn<QString>("text");
    QTest::newRow("seconds have two digits") << qint64(5999) << u"2 of 8 tabs, 1234 rows, 0:05"_s;
    QTest::newRow("a minute begins anew") << qint64(60'000) << u"2 of 8 tabs, 1234 rows, 1:00"_s;
    QTest::newRow("minutes go on beyond an hour")
        << qint64(3'661'000) << u"2 of 8 tabs, 1234 rows, 61:01"_s;
}

void tst_host_console::words_the_progress()
{
    QFETCH(qint64, elapsed_ms);
    QFETCH(QString, text);
    QCOMPARE(progress_text(2, 8, 1234, elapsed_ms), text);
}

TEST_MAIN(tst_host_console)

#include "tst_host_console.moc"
