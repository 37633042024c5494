#include "private_copy.h"

#include <QDir>
#include <QFileInfo>

#include "new_file.h"
#include "result_location.h"
#include "sha256.h"

using namespace Qt::StringLiterals;

QString private_copy(const QByteArray &bytes, const QString &sha256, const QString &wanted,
                     const QStringList &evidence, QString &failure)
{
    constexpr int most_names = 1'000;
    for (int number = 1; number <= most_names; ++number) {
        QString path = number == 1 ? wanted : wanted + u"-%1"_s.arg(number);
        if (const auto refused = check_apart(path, u"copy %1"_s.arg(path), evidence)) {
            failure = refused->reason;
            return {};
        }
        const QFileInfo info(path);
        if (info.isFile() && sha256_of(path) == sha256)
            return path;
        if (info.exists() || info.isSymLink())
            continue;
        QDir().mkpath(info.path());
        failure = write_new_file(path, bytes);
        return failure.isEmpty() ? path : QString();
    }
    failure = u"other files lie at %1"_s.arg(wanted);
    return {};
}
