// One table with search, filter by account, sorting, paging and the details of a row.

const rowsOfPage = [50, 100, 500, 2000];
const longestCell = 300; // characters; the details show all

class TableView {
    constructor(table, openRow) {
        this.table = table;
        this.openRow = openRow;
        this.text = '';
        this.account = null;
        this.span = null;
        this.sort = null;
        this.page = 0;
        this.pageSize = 100;
        this.showsAll = false;
        this.rows = null;
        this.element = make('div', {class: 'table-view'});
        this.build();
    }

    build() {
        this.search = make('input', {type: 'search', 'aria-label': `Search ${this.table.name}`,
            placeholder: 'Search all columns', oninput: () => this.searchSoon()});
        this.accounts = make('select', {'aria-label': 'Account',
            onchange: () => this.setAccount(this.accounts.value)});
        this.fillAccounts();
        this.allColumns = make('input', {type: 'checkbox', onchange: () => this.showAll(this.allColumns.checked)});
        this.sizes = make('select', {'aria-label': 'Rows of a page', onchange: () => this.setPageSize(Number(this.sizes.value))},
            ...rowsOfPage.map(size => make('option', {value: size, selected: size === this.pageSize}, `${size} a page`)));
        this.spanNote = make('button', {type: 'button', hidden: true, onclick: () => this.setSpan(null)});
        this.count = make('span', {class: 'count', role: 'status', 'aria-live': 'polite'});
        this.back = make('button', {type: 'button', onclick: () => this.turn(-1)}, 'Previous page');
        this.next = make('button', {type: 'button', onclick: () => this.turn(1)}, 'Next page');
        this.body = make('tbody');
        this.head = make('thead');
        this.selection = make('p', {class: 'printed'});
        this.details = make('div', {class: 'details', hidden: true, tabindex: '-1', 'aria-label': 'Details of the row', role: 'region'});
        this.element.append(
            make('div', {class: 'controls'}, this.search, this.accounts, this.spanNote,
                make('label', {}, this.allColumns, ' All columns'), this.sizes),
            make('div', {class: 'controls'}, this.back, this.next, this.count),
            this.selection,
            make('div', {class: 'scroll'}, make('table', {},
                make('caption', {}, this.table.title), this.head, this.body)),
            this.details);
    }

    fillAccounts() {
        const names = this.table.accounts().sort();
        const option = (label, value) => make('option', {value}, label);
        // What is chosen by its place cannot be confused with a name.
        this.accountNames = names;
        this.accounts.append(option('All accounts', ''));
        withChildren(this.accounts, names.map((name, place) => option(name === '' ? '(the machine)' : name, place)));
        this.accounts.hidden = names.length < 2;
    }

    columns() {
        const shown = this.table.columns.filter(column => column.isShown);
        return this.showsAll || shown.length === 0 ? this.table.columns : shown;
    }

    searchSoon() {
        clearTimeout(this.waiting);
        this.waiting = setTimeout(() => this.setText(this.search.value), 50);
    }
    setText(text) {
        this.text = text.toLowerCase();
        this.refresh();
    }
    setAccount(place) {
        this.account = place === '' ? null : this.accountNames[Number(place)];
        this.refresh();
    }
    /** Only rows of the time line between two times. */
    setSpan(span) {
        this.span = span;
        this.spanNote.hidden = !span;
        this.spanNote.textContent = span ? `${span.label} \u00d7` : '';
        this.refresh();
    }
    setPageSize(size) {
        this.pageSize = size;
        this.page = 0;
        this.render();
    }
    showAll(all) {
        this.showsAll = all;
        this.render();
    }
    turn(pages) {
        this.page += pages;
        this.render();
        // A button that is switched off would lose the focus to the page.
        if (document.activeElement === document.body)
            (pages < 0 ? this.next : this.back).focus();
    }
    sortBy(column) {
        const isDescending = this.sort?.column === column && !this.sort.isDescending;
        this.sort = {column, isDescending};
        this.refresh();
        this.head.querySelector('[aria-sort] button')?.focus();
    }

    selected() {
        const {table} = this;
        const found = this.text ? table.rowsWith(this.text) : null;
        const rows = [];
        for (let row = 0; row < table.rowCount; ++row) {
            if (found && !found[row])
                continue;
            if (this.account !== null && table.accountOf(row) !== this.account)
                continue;
            if (this.span && !this.span.holds(table.events[row]))
                continue;
            rows.push(row);
        }
        return rows;
    }
    sorted(rows) {
        if (!this.sort)
            return rows;
        const {column, isDescending} = this.sort;
        const direction = isDescending ? -1 : 1;
        return rows.sort((a, b) => Number(column.isEmptyAt(a)) - Number(column.isEmptyAt(b))
            || direction * (column.rankOf(a) - column.rankOf(b)) || a - b);
    }
    refresh() {
        this.rows = this.sorted(this.selected());
        this.page = 0;
        this.render();
    }

    render() {
        if (!this.rows)
            return this.refresh();
        const pages = Math.max(1, Math.ceil(this.rows.length / this.pageSize));
        this.page = Math.min(Math.max(this.page, 0), pages - 1);
        const first = this.page * this.pageSize;
        const shown = this.rows.slice(first, first + this.pageSize);
        this.back.disabled = this.page === 0;
        this.next.disabled = this.page === pages - 1;
        const all = this.table.rowCount;
        this.count.textContent = this.rows.length === 0 ? `No row of ${grouped.format(all)}`
            : `Rows ${grouped.format(first + 1)} to ${grouped.format(first + shown.length)} of ${grouped.format(this.rows.length)}`
                + (this.rows.length === all ? '' : `, out of ${grouped.format(all)}`);
        this.selection.textContent = this.textOfSelection();
        this.renderHead();
        this.body.replaceChildren(...shown.map((row, place) => this.lineOf(row, place)));
        this.details.hidden = true;
    }
    /** What a printed page has to tell of the controls, which are not printed. */
    textOfSelection() {
        return [this.text && `Searched for "${this.search.value}".`,
            this.account !== null && `Account ${this.account || '(the machine)'} alone.`,
            this.span && `${this.span.label}.`, this.count.textContent].filter(Boolean).join(' ');
    }
    renderHead() {
        this.head.replaceChildren(make('tr', {}, ...this.columns().map(column => {
            const isSorted = this.sort?.column === column;
            const arrow = isSorted ? (this.sort.isDescending ? ' \u25bc' : ' \u25b2') : '';
            return make('th', {scope: 'col', class: [classOf(column), column.isDerived ? 'derived' : null].filter(Boolean).join(' ') || null, title: column.meaning,
                'aria-sort': isSorted ? (this.sort.isDescending ? 'descending' : 'ascending') : null},
                make('button', {type: 'button', onclick: () => this.sortBy(column)}, column.name + arrow));
        })));
    }
    lineOf(row, place) {
        const line = make('tr', {class: 'row', tabindex: place === 0 ? '0' : '-1',
            onclick: () => this.showDetails(row, line, {preventScroll: true}),
            onkeydown: event => this.pressKey(event, row, line)},
            ...this.columns().map(column => cellOf(column, column.at(row))));
        return line;
    }
    pressKey(event, row, line) {
        const beside = {ArrowDown: line.nextElementSibling, ArrowUp: line.previousElementSibling}[event.key];
        if (event.key === 'Enter' || event.key === ' ')
            this.showDetails(row, line);
        else if (beside)
            beside.focus();
        else
            return;
        event.preventDefault();
    }
    showDetails(row, line, focus = {}) {
        for (const other of this.body.querySelectorAll('[aria-selected]'))
            other.removeAttribute('aria-selected');
        line.setAttribute('aria-selected', 'true');
        const list = make('dl', {class: 'facts'});
        for (const {column, value} of this.table.detailsOf(row)) {
            if (textOf(value) === '')
                continue;
            list.append(make('dt', {title: column.meaning, class: column.isDerived ? 'derived' : null}, column.name),
                make('dd', {}, ...this.valueWithLinks(column, value)));
        }
        const close = make('button', {type: 'button', onclick: () => { this.details.hidden = true; line.focus(); }}, 'Close');
        this.details.replaceChildren(make('h3', {}, 'The whole row'), list, close);
        this.details.hidden = false;
        this.details.focus(focus);
    }
    /** Rows that are cited as "table:1,2" lead there. */
    valueWithLinks(column, value) {
        if (!this.table.isView || column.name !== 'rows')
            return [literalOr(value)];
        return textOf(value).split(' ').flatMap(cited => {
            const [table, ids] = cited.split(':');
            return (ids ?? '').split(',').map(id => make('button', {type: 'button',
                onclick: () => this.openRow(table, id)}, `${table}:${id}`));
        });
    }
    /** Shows the row of that id alone on its page. */
    showRowOfId(id) {
        this.search.value = '';
        this.accounts.value = '';
        Object.assign(this, {text: '', account: null, sort: null});
        this.refresh();
        const place = this.rows.findIndex(row => textOf(this.table.id.at(row)) === id);
        if (place < 0) {
            this.count.textContent = `Row ${id} is not in this report, which has selected rows only`;
            return;
        }
        this.turn(Math.floor(place / this.pageSize));
        const line = this.body.children[place % this.pageSize];
        line.scrollIntoView({block: 'center'});
        this.showDetails(this.rows[place], line);
    }
}

const numberKinds = new Set(['number', 'run_count', 'unix_time', 'row_id']);

function classOf(column) {
    return numberKinds.has(column.kind) ? 'number' : column.kind === 'utc_time' ? 'time' : null;
}

function literalOr(value) {
    return value !== null && typeof value === 'object' ? make('span', {class: 'literal', title: 'SQL literal: this is no text'}, value.sql)
        : textOf(value);
}

function cellOf(column, value) {
    const text = textOf(value);
    const shown = text.length > longestCell ? `${Array.from(text.slice(0, 2 * longestCell)).slice(0, longestCell).join('')}\u2026` : literalOr(value);
    return make('td', {class: classOf(column)}, shown);
}
