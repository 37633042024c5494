// Puts the page together.

const themes = [['', 'as the system'], ['light', 'light'], ['dark', 'dark']];
const systemIsDark = window.matchMedia('(prefers-color-scheme: dark)');

class Page {
    constructor() {
        const manifest = embedded('manifest');
        this.showTheme(0);
        this.showEnding();
        this.tables = manifest.tables.map(id => new PackedTable(embedded(id)));
        this.programs = manifest.programs ? new PackedTable(embedded(manifest.programs)) : null;
        if (this.programs)
            this.programs.isView = true;
        this.activity = embedded('activity');
        this.timeLine = new TimeLineTable(this.tables);
        this.shownTables = [...(this.programs ? [this.programs] : []), this.timeLine, ...this.tables];
        this.views = new Map();
        this.unfoldWhenPrinted();
        this.buildTabs();
        this.buildPictures();
    }

    showTheme(place) {
        this.theme = place % themes.length;
        const [name, label] = themes[this.theme];
        const button = document.getElementById('theme');
        button.hidden = false;
        button.textContent = `Theme: ${label}`;
        button.onclick = () => this.showTheme(this.theme + 1);
        systemIsDark.onchange = () => this.showTheme(this.theme);
        document.documentElement.dataset.theme = name || (systemIsDark.matches ? 'dark' : 'light');
    }

    /** What the report lacks was found out last, and has to be read first. */
    showEnding() {
        const ending = document.getElementById('ending');
        if (ending)
            document.querySelector('main').prepend(ending);
    }

    /** Hashes and lists stand in parts that are folded on the screen. */
    unfoldWhenPrinted() {
        let folded = [];
        window.addEventListener('beforeprint', () => {
            folded = [...document.querySelectorAll('#facts details:not([open])')];
            folded.forEach(each => { each.open = true; });
        });
        window.addEventListener('afterprint', () => folded.forEach(each => { each.open = false; }));
    }

    buildPictures() {
        const selection = new Set(this.tables.map(table => table.name));
        this.timeLinePicture = new TimeLinePicture(this.timeLine, this.activity, span => {
            this.viewOf(this.timeLine).setSpan(span);
            this.select(this.timeLine, true);
        });
        document.getElementById('pictures').append(activityPicture(this.activity, selection), monthsPicture(this.activity, selection),
            this.timeLinePicture.element, runsPicture(this.programs));
    }

    viewOf(table) {
        if (!this.views.has(table))
            this.views.set(table, new TableView(table, (name, id) => this.openRow(name, id)));
        return this.views.get(table);
    }
    openRow(name, id) {
        const table = this.tables.find(each => each.name === name);
        if (!table)
            return;
        this.select(table, false);
        this.viewOf(table).showRowOfId(id);
    }

    buildTabs() {
        this.panel = make('div', {role: 'tabpanel', id: 'panel'});
        this.tabs = this.shownTables.map((table, place) => make('button', {type: 'button', role: 'tab', id: `tab-${place}`, 'data-table': table.name, 'aria-controls': 'panel',
            onclick: () => this.select(table, false), onkeydown: event => this.pressTabKey(event)},
            `${table.name} (${grouped.format(table.rowCount)})`));
        document.getElementById('tables').append(make('div', {class: 'tabs', role: 'tablist', 'aria-label': 'Tables'}, ...this.tabs), this.panel);
        this.select(this.shownTables[0], false);
    }
    select(selected, scrolls) {
        this.shownTables.forEach((table, place) => {
            const isSelected = table === selected;
            this.tabs[place].setAttribute('aria-selected', String(isSelected));
            this.tabs[place].tabIndex = isSelected ? 0 : -1;
            if (!isSelected)
                return;
            const view = this.viewOf(table);
            this.panel.setAttribute('aria-labelledby', this.tabs[place].id);
            this.panel.replaceChildren(view.element);
            view.render();
        });
        if (scrolls)
            document.getElementById('tables').scrollIntoView();
    }
    pressTabKey(event) {
        const at = this.tabs.indexOf(event.target);
        const last = this.tabs.length - 1;
        const place = {ArrowRight: at === last ? 0 : at + 1, ArrowLeft: at === 0 ? last : at - 1, Home: 0, End: last}[event.key];
        if (place === undefined)
            return;
        this.select(this.shownTables[place], false);
        this.tabs[place].focus();
        event.preventDefault();
    }
}

try {
    new Page();
} catch (error) {
    // A browser takes no more than some 500 MB of text in one table.
    document.getElementById('facts').prepend(make('div', {class: 'warning', role: 'alert'},
        `The pictures and tables of this report cannot be shown: ${error.message}. A report of fewer rows can: see --tab, --user and --since.`));
}
