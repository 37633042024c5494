#include "whole_file_copy.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace {

using status = whole_file_copy_result::status;

constexpr qint64 block_size = 1048576;

// Opening a pipe or a device would block, or would take bytes from it.
whole_file_copy_result open_source(QFile &source)
{
    if (const QFileInfo file(source); file.exists() && !file.isFile())
        return {status::source_failed, u"Not a regular file"_s};
    if (!source.open(QIODevice::ReadOnly))
        return {status::source_failed, source.errorString()};
    return {status::copied, {}};
}

whole_file_copy_result copy_blocks(QFile &source, QSaveFile &destination, const bool &cancel)
{
    QByteArray block(block_size, Qt::Uninitialized);
    for (;;) {
        if (cancel)
            return {status::cancelled, {}};
        const qint64 length = source.read(block.data(), block.size());
        if (length < 0)
            return {status::source_failed, source.errorString()};
        if (length == 0)
            return {status::copied, {}};
        if (destination.write(block.constData(), length) != length)
            return {status::destination_failed, destination.errorString()};
    }
}

} // namespace

whole_file_copy_result copy_whole_file(const QString &source_path, const QString &destination_path,
                                       const bool &cancel)
{
    QFile source(source_path);
    whole_file_copy_result result = open_source(source);
    if (result.how != status::copied)
        return result;
    QSaveFile destination(destination_path);
    if (!destination.open(QIODevice::WriteOnly))
        return {status::destination_failed, destination.errorString()};
    // A destination that was not committed removes its temporary file in its destructor.
    result = copy_blocks(source, destination, cancel);
    if (result.how == status::copied && !destination.commit())
        return {status::destination_failed, destination.errorString()};
    return result;
}
