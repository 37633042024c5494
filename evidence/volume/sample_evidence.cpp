#include "sample_evidence.h"

#include "application_keys.h"
#include "user_assist.h"

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

void add_application(evidence_volume &volume, const QString &name)
{
    for (const QString &key : {uninstall_key, uninstall_key_32})
        volume.software().key(key).key(name).text(u"DisplayName"_s, name);
    volume.software().key(registered_applications_key).text(name, u"Software\\"_s + name);
}

// One program gives a row of every table that is filled from the users' hives and folders.
void add_program(evidence_volume &volume, const QString &account, const QString &name)
{
    hive_builder &hive = volume.user(account);
    hive.key(user_assist_key + u"\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}\\Count"_s)
        .binary(rotated_name(name + u"\\uninstall.exe"_s),
                user_assist_data(5, filetime_of_unix(1600000000)));
    hive.key(compatibility_store_key).binary(u"C:\\"_s + name + u".exe"_s, "data");
    const QString class_id = u'{' + name + u'}';
    hive.key(hide_desktop_icons_key + u"\\NewStartPanel"_s).dword(class_id, 1);
    hive.key(name_space_key + u'\\' + class_id).text(u""_s, name);
    volume.package(account, name);
}

} // namespace

void add_sample_evidence(evidence_volume &volume)
{
    for (const QString &name : {u"one"_s, u"two"_s, u"three"_s})
        add_application(volume, name);
    add_program(volume, u"ann"_s, u"one"_s);
    add_program(volume, u"ann"_s, u"two"_s);
    add_program(volume, u"bob"_s, u"three"_s);
}

} // namespace evidence
