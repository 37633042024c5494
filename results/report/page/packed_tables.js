// Tables as they stand in the file: columns in which each distinct value stands once.

/** A value as text. What was no text in the database is an object with its SQL literal. */
function textOf(value) {
    if (value === null || value === undefined)
        return '';
    return typeof value === 'object' ? value.sql : String(value);
}

/** Numbers before texts, texts without regard to letter case, empty values last. */
function ranksOf(values) {
    const keys = values.map(value => typeof value === 'number' ? value : textOf(value).toLowerCase());
    const kindOf = key => typeof key === 'number' ? 0 : key === '' ? 2 : 1;
    const compare = (a, b) => {
        const kinds = kindOf(keys[a]) - kindOf(keys[b]);
        return kinds || (keys[a] < keys[b] ? -1 : keys[a] > keys[b] ? 1 : 0);
    };
    const order = Uint32Array.from(keys.keys()).sort(compare);
    const ranks = new Uint32Array(values.length);
    for (let i = 1; i < order.length; ++i)
        ranks[order[i]] = ranks[order[i - 1]] + (compare(order[i - 1], order[i]) ? 1 : 0);
    const isEmpty = Uint8Array.from(keys, key => kindOf(key) === 2 ? 1 : 0);
    return {ranks, isEmpty};
}

class Column {
    constructor(packed) {
        Object.assign(this, packed); // name, meaning, kind, isShown, isDerived, values, places
    }
    placeOf(row) {
        return this.places ? this.places[row] : this.values.length === 1 ? 0 : row;
    }
    at(row) {
        return this.values[this.placeOf(row)];
    }
    rankOf(row) {
        this.ranked ??= ranksOf(this.values);
        return this.ranked.ranks[this.placeOf(row)];
    }
    isEmptyAt(row) {
        this.ranked ??= ranksOf(this.values);
        return this.ranked.isEmpty[this.placeOf(row)] === 1;
    }
    /** For each distinct value whether it holds the text, which is in small letters; null if none does. */
    valuesWith(text) {
        this.lower ??= this.values.map(value => textOf(value).toLowerCase());
        let isAny = false;
        const found = Uint8Array.from(this.lower, value => {
            const holds = value.includes(text);
            isAny ||= holds;
            return holds ? 1 : 0;
        });
        return isAny ? found : null;
    }
}

class PackedTable {
    constructor(packed) {
        this.name = packed.name;
        this.title = packed.title;
        this.rowCount = packed.rows;
        this.columns = packed.columns.map(column => new Column(column));
        this.subjects = packed.subjects.map(place => this.columns[place]);
        this.account = this.column('system_account');
        this.id = this.column('INT');
    }
    column(name) {
        return this.columns.find(column => column.name === name);
    }
    subjectOf(row) {
        return this.subjects.map(column => textOf(column.at(row))).find(text => text !== '') ?? '';
    }
    accountOf(row) {
        return this.account ? textOf(this.account.at(row)) : '';
    }
    /** For each row whether one of its cells holds the text. */
    rowsWith(text) {
        const found = new Uint8Array(this.rowCount);
        for (const column of this.columns) {
            const values = column.valuesWith(text);
            if (!values)
                continue;
            for (let row = 0; row < this.rowCount; ++row)
                found[row] |= values[column.placeOf(row)];
        }
        return found;
    }
    accounts() {
        return this.account ? [...new Set(this.account.values.map(textOf))] : [];
    }
    detailsOf(row) {
        return this.columns.map(column => ({column, value: column.at(row)}));
    }
}
