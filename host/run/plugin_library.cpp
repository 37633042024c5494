#include "plugin_library.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLibrary>

using namespace Qt::StringLiterals;

namespace {

#ifdef Q_OS_MACOS
const auto library_name = u"libwindows_installed_applications.dylib"_s;
#else
const auto library_name = u"libwindows_installed_applications.so"_s;
#endif

using create_object_function = void *(*)();

loaded_plugin failed(const QString &reason)
{
    return {nullptr, reason};
}

/// Path of the library that belongs to this program, or an empty text.
QString library_of_program()
{
    const QString program_directory = QCoreApplication::applicationDirPath();
    for (const QString &directory :
         {u"/"_s, u"/../plugin/"_s, u"/" INSTALLED_LIBRARY_FOLDER "/"_s, u"/../lib/"_s}) {
        const QFileInfo library(program_directory + directory + library_name);
        if (library.isFile())
            return library.canonicalFilePath();
    }
    return {};
}

bool has_progress_signals(const QObject &object)
{
    // SIGNAL() puts a digit before the name.
    return object.metaObject()->indexOfSignal(RECORDS_SIGNAL + 1) >= 0 &&
           object.metaObject()->indexOfSignal(TABS_SIGNAL + 1) >= 0;
}

loaded_plugin create_from(const QString &path)
{
    QLibrary library(path);
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!library.load())
        return failed(u"plug-in %1 cannot be loaded: %2"_s.arg(path, library.errorString()));
    const auto create_object =
        reinterpret_cast<create_object_function>(library.resolve("create_object"));
    if (create_object == nullptr)
        return failed(u"%1 is no plug-in: it exports no create_object"_s.arg(path));
    std::unique_ptr<artifact_plugin> object(static_cast<artifact_plugin *>(create_object()));
    if (object == nullptr || !has_progress_signals(*object))
        return failed(
            u"%1 is no plug-in for this program: its object is of another kind"_s.arg(path));
    return {std::move(object), {}, path};
}

} // namespace

loaded_plugin load_plugin(const QString &file)
{
    if (file.isEmpty()) {
        const QString path = library_of_program();
        return path.isEmpty()
                   ? failed(u"no %1 lies beside the program; give it with --plugin"_s.arg(
                         library_name))
                   : create_from(path);
    }
    // If the path does not exist, the loader tries other suffixes and other folders.
    const QFileInfo info(file);
    if (!info.isFile())
        return failed(u"plug-in %1 does not exist"_s.arg(file));
    return create_from(info.absoluteFilePath());
}
