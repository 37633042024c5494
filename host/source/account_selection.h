#ifndef ACCOUNT_SELECTION_H
#define ACCOUNT_SELECTION_H

#include <QString>
#include <QStringList>

#include <optional>

#include "source_volume.h"

/// The accounts that a run reads, and what the examiner should know about the others.
struct account_selection
{
    QStringList accounts;
    QStringList others;   ///< folders beside theirs in which nothing was found to read
    QStringList warnings; ///< of what is not read
    QStringList remarks;
    std::optional<refusal> refused; ///< of a requested account that does not exist
};

/// The `requested` accounts, whatever the letter case of the names given. If there are none: all
/// accounts whose folder holds a registry hive or a package folder, or may hide one, sorted by
/// name. A folder that is reached twice, through a link beside it, is taken once. Accounts whose
/// folder or files lie outside of the volume are left out and reported.
account_selection select_accounts(const source_volume &volume, const QStringList &requested);

/// Whether any account would be found.
bool has_any_account(const source_volume &volume);

#endif
