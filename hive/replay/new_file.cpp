#include "new_file.h"

#include <QTemporaryFile>

using namespace Qt::StringLiterals;

QString write_new_file(const QString &path, const QByteArray &bytes)
{
    QTemporaryFile file(path + ".XXXXXX"_L1);
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush() || !file.rename(path))
        return file.errorString();
    file.setAutoRemove(false);
    return {};
}
