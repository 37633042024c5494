// Puts the page together.

const themes = [['', 'as the system'], ['light', 'light'], ['dark', 'dark']];
const systemIsDark = window.matchMedia('(prefers-color-scheme: dark)');

class Page {
    constructor() {
        const manifest = embedded('manifest');
        this.tables = manifest.tables.map(id => new PackedTable(embedded(id)));
        this.programs = manifest.programs ? new PackedTable(embedded(manifest.programs)) : null;
        this.activity = embedded('activity');
        this.timeLine = new TimeLineTable(this.tables);
        this.views = new Map();
        this.showTheme(0);
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

    buildPictures() {
        this.timeLinePicture = new TimeLinePicture(this.timeLine, this.activity, span => {
            this.viewOf(this.timeLine).setSpan(span);
            this.select(this.timeLine.name, true);
        });
        document.getElementById('pictures').append(activityPicture(this.activity), monthsPicture(this.activity),
            this.timeLinePicture.element, runsPicture(this.programs));
    }

    allTables() {
        return [...(this.programs ? [this.programs] : []), this.timeLine, ...this.tables];
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
        this.select(name, false);
        this.viewOf(table).showRowOfId(id);
    }

    buildTabs() {
        this.panel = make('div', {role: 'tabpanel', id: 'panel'});
        this.tabs = this.allTables().map(table => make('button', {type: 'button', role: 'tab', id: `tab-${table.name}`, 'aria-controls': 'panel',
            onclick: () => this.select(table.name, false), onkeydown: event => this.pressTabKey(event)},
            `${table.name} (${grouped.format(table.rowCount)})`));
        document.getElementById('tables').append(make('div', {class: 'tabs', role: 'tablist', 'aria-label': 'Tables'}, ...this.tabs), this.panel);
        this.select(this.allTables()[0].name, false);
    }
    select(name, scrolls) {
        this.allTables().forEach((table, place) => {
            const isSelected = table.name === name;
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
        const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
        if (!step)
            return;
        const place = (this.tabs.indexOf(event.target) + step + this.tabs.length) % this.tabs.length;
        this.select(this.allTables()[place].name, false);
        this.tabs[place].focus();
        event.preventDefault();
    }
}

new Page();
