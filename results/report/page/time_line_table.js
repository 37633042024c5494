// The time line: every time of every row, in order. It refers to the tables and repeats nothing of them.

const secondsOfDay = 86400;

/** The time of a value in Unix seconds; null if there is none. Install dates are days. */
function timeOf(column, value) {
    if (column.kind === 'unix_time') {
        // Numbers that a script cannot hold exactly stand as texts.
        const time = typeof value === 'string' && /^-?\d+$/.test(value) ? Number(value) : value;
        return Number.isInteger(time) && time !== 0 ? time : null;
    }
    const day = /^(\d{4})-(\d\d)-(\d\d)$/.exec(textOf(value));
    return day ? Date.UTC(Number(day[1]), Number(day[2]) - 1, Number(day[3])) / 1000 : null;
}

/** The columns of a table that hold times, each with the column that shows them. */
function timeColumns(table) {
    const found = [];
    for (const column of table.columns) {
        const shown = table.column(column.kind === 'unix_time' ? `${column.name}_utc` : `${column.name}_iso`);
        if ((column.kind === 'unix_time' || column.kind === 'install_date') && shown)
            found.push({times: column.kind === 'unix_time' ? column : shown, shown, event: column.meaning});
    }
    return found;
}

class TimeLineTable {
    constructor(tables) {
        this.name = 'timeline';
        this.title = 'every time of every row, in UTC; install dates are local days';
        this.isView = true;
        this.tables = tables;
        this.events = [];
        tables.forEach((table, index) => this.addTable(table, index));
        this.events.sort((a, b) => a.time - b.time);
        this.rowCount = this.events.length;
        this.columns = this.makeColumns();
    }
    addTable(table, index) {
        for (const told of timeColumns(table)) {
            for (let row = 0; row < table.rowCount; ++row) {
                const time = timeOf(told.times, told.times.at(row));
                if (time !== null)
                    this.events.push({time, table: index, row, told});
            }
        }
    }
    makeColumns() {
        const made = (name, meaning, kind, at) => this.column(name, meaning, kind, at);
        return [
            made('time_utc', 'when', 'utc_time', (table, event) => event.told.shown.at(event.row)),
            made('event', 'what the time tells', 'text', (table, event) => event.told.event),
            made('subject', 'what the row is about', 'text', (table, event) => table.subjectOf(event.row)),
            made('system_account', 'account of the row', 'account', (table, event) => table.accountOf(event.row)),
            made('rows', 'the row that tells it', 'text', (table, event) => this.citation(event)),
        ];
    }
    citation(event) {
        const table = this.tables[event.table];
        return `${table.name}:${table.id ? textOf(table.id.at(event.row)) : '?'}`;
    }
    column(name, meaning, kind, of) {
        const at = row => of(this.tables[this.events[row].table], this.events[row]);
        const column = {name, meaning, kind, isShown: true, isDerived: true, at};
        const ranked = () => column.ranked ??= ranksOf(Array.from(this.events, (event, row) => at(row)));
        // The events are in the order of time.
        column.rankOf = kind === 'utc_time' ? row => row : row => ranked().ranks[row];
        column.isEmptyAt = kind === 'utc_time' ? () => false : row => ranked().isEmpty[row] === 1;
        return column;
    }
    accountOf(row) {
        return textOf(this.columns[3].at(row));
    }
    accounts() {
        return [...new Set(this.tables.flatMap(table => table.accounts()))];
    }
    rowsWith(text) {
        const found = this.tables.map(table => table.rowsWith(text));
        return Uint8Array.from(this.events, event =>
            found[event.table][event.row] || event.told.event.toLowerCase().includes(text)
                || this.citation(event).includes(text) ? 1 : 0);
    }
    detailsOf(row) {
        const event = this.events[row];
        return [0, 1, 4].map(place => this.columns[place]).map(column => ({column, value: column.at(row)}))
            .concat(this.tables[event.table].detailsOf(event.row));
    }
}
