#ifndef FUZZ_MAIN_H
#define FUZZ_MAIN_H

#include <QApplication>
#include <QByteArray>
#include <cstddef>
#include <cstdint>

/// The entry point of a fuzzer: `operation` gets each input as a QByteArray, under one application
/// object that needs no display and that nothing destroys, since libFuzzer leaves through exit().
/// What it throws ends the fuzzer.
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
