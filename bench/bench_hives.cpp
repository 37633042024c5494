#include "bench_hives.h"

#include "application_keys.h"
#include "hive_padding.h"
#include "user_assist.h"

#include <QUuid>

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr qint64 first_time = 1700000000; // 2023-11-14T22:13:20Z
constexpr qint64 seconds_apart = 61;
constexpr int vendors = 90;

/// The class id of a number; it looks like any other.
QString class_id(int number)
{
    return QUuid::createUuidV5(QUuid(), QByteArray::number(number)).toString().toUpper();
}

/// "Vendor 4\Product 94": the folder of a product below its vendor's.
QString product_folder(int index)
{
    return u"Vendor %1\\Product %2"_s.arg(index % vendors).arg(index);
}

/// A day of the years from 2020 on, as installers write it.
QString install_date(int index)
{
    const int date = (2020 + index % 5) * 10000 + (1 + index % 12) * 100 + 1 + index % 28;
    return QString::number(date);
}

/// The key of every third application has a name, the others have a class id, as installers do it.
QString application_key(int index)
{
    return index % 3 == 0 ? u"Product Suite %1_is1"_s.arg(index) : class_id(index);
}

void add_application(hive_key &uninstall, int index)
{
    const QString folder = u"C:\\Program Files\\"_s + product_folder(index);
    const int vendor = index % vendors;
    uninstall.add_key(application_key(index))
        .text(u"DisplayName"_s, u"Product Suite %1 (64-bit edition)"_s.arg(index))
        .text(u"DisplayVersion"_s, u"%1.%2.%3"_s.arg(index % 30).arg(index % 12).arg(index))
        .text(u"Publisher"_s, u"Vendor %1 Corporation"_s.arg(vendor))
        .text(u"InstallLocation"_s, folder)
        .text(u"InstallDate"_s, install_date(index))
        .text(u"InstallSource"_s, u"C:\\Users\\ann\\Downloads\\setup %1\\"_s.arg(index))
        .text(u"URLInfoAbout"_s, u"https://vendor%1.example/products/%2"_s.arg(vendor).arg(index))
        .text(u"UninstallString"_s, u"\"%1\\unins000.exe\" /log"_s.arg(folder))
        // Values that the walk must skip.
        .dword(u"NoModify"_s, 1)
        .dword(u"EstimatedSize"_s, 5632)
        .last_write_unix(first_time + seconds_apart * index);
}

void add_applications(hive_key &uninstall, int count)
{
    for (int index = 0; index < count; ++index)
        add_application(uninstall, index);
}

void add_registered(hive_key &registered, int count)
{
    for (int index = 0; index < count; ++index)
        registered.text(u"Product Suite %1"_s.arg(index),
                        u"Software\\%1\\Capabilities"_s.arg(product_folder(index)));
}

QString executed_name(int index, bool is_uninstaller)
{
    const QString program = is_uninstaller ? u"uninstall"_s : u"program"_s;
    return u"{6D809377-6AF0-444B-8957-A3773F02200E}\\%1\\%2.exe"_s.arg(product_folder(index),
                                                                       program);
}

/// The session's own entry, which is no program, comes first in each class id.
void add_user_assist(hive_key &user_assist, const volume_sizes &sizes)
{
    for (int id = 0; id < sizes.class_ids && sizes.user_assist > 0; ++id)
        user_assist.key(class_id(id) + u"\\Count"_s)
            .binary(rotated_name(u"UEME_CTLSESSION"_s), QByteArray(1612, '\0'));
    for (int index = 0; index < sizes.user_assist; ++index) {
        const bool is_uninstaller = index % sizes.uninstall_every == 0;
        const qint64 last_run = filetime_of_unix(first_time + seconds_apart * index);
        user_assist.key(class_id(index % sizes.class_ids) + u"\\Count"_s)
            .binary(rotated_name(executed_name(index, is_uninstaller)),
                    user_assist_data(static_cast<quint32>(index % 400), last_run));
    }
}

void add_store(hive_key &store, int count)
{
    const QByteArray data = "SACP\x01\0\0\0"_ba.leftJustified(56, '\0');
    for (int index = 0; index < count; ++index)
        store.binary(store_program(index), data);
}

void add_icons(hive_builder &hive, const volume_sizes &sizes)
{
    hive_key &hidden = hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s);
    hive_key &name_space = hive.key(name_space_key);
    for (int index = 0; index < sizes.hidden_icons; ++index) {
        hidden.dword(class_id(index), static_cast<quint32>(index % 2));
        hive_key &icon = name_space.key(class_id(index));
        for (int name = 0; name < sizes.names_per_icon; ++name)
            icon.text(name == 0 ? QString() : u"Name %1"_s.arg(name),
                      u"Desktop Item %1, name %2"_s.arg(index).arg(name));
    }
}

} // namespace

void fill_software(hive_builder &hive, const volume_sizes &sizes)
{
    add_applications(hive.key(uninstall_key), sizes.applications_64);
    add_applications(hive.key(uninstall_key_32), sizes.applications_32);
    add_registered(hive.key(registered_applications_key), sizes.registered);
    hive.sort_subkeys();
    pad_hive(hive, u"Classes"_s, sizes.software_megabytes);
}

void fill_user(hive_builder &hive, const volume_sizes &sizes)
{
    add_user_assist(hive.key(user_assist_key), sizes);
    add_store(hive.key(compatibility_store_key), sizes.store);
    add_icons(hive, sizes);
    hive.sort_subkeys();
    pad_hive(hive, u"SOFTWARE\\Classes"_s, sizes.user_megabytes);
}

QString store_program(int index)
{
    return u"C:\\Program Files\\%1\\program.exe"_s.arg(product_folder(index));
}
