#ifndef FUZZ_MAIN_H
#define FUZZ_MAIN_H

#include <QApplication>
#include <QByteArray>
#include <cstddef>
#include <cstdint>

/// The entry point of a fuzzer: `operation` gets each input as a QByteArray. One application object
/// exists, which needs no display and is never destroyed, because libFuzzer leaves through exit().
/// An exception from `operation` ends the fuzzer.
#define FUZZ_MAIN(operation)                                                                       \
    extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)                                   \
    {                                                                                              \
        qputenv("QT_QPA_PLATFORM", "offscreen");                                                   \
        static const QApplication *const application = new QApplication(*argc, *argv);             \
        Q_UNUSED(application)                                                                      \
        return 0;                                                                                  \
    }                                                                                              \
                                                                                                   \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)              \
    {                                                                                              \
        operation(QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size))); \
        return 0;                                                                                  \
    }

#endif
