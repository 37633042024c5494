#ifndef TEST_MAIN_H
#define TEST_MAIN_H

#include <QApplication>
#include <QTest>

/// The main function of a test program: runs the test object under a QApplication that needs no
/// display unless the caller chose a platform.
#define TEST_MAIN(test_object)                                                                     \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))                                         \
            qputenv("QT_QPA_PLATFORM", "offscreen");                                               \
        QApplication application(argc, argv);                                                      \
        test_object object;                                                                        \
        return QTest::qExec(&object, argc, argv);                                                  \
    }

#endif
