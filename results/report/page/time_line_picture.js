// The time line that can be zoomed: by the wheel, by dragging, by buttons and by keys.

function secondText(seconds) {
    return new Date(seconds * 1000).toISOString().slice(0, 19).replace('T', ' ');
}

class TimeLinePicture {
    constructor(timeLine, limits, showSpan) {
        this.timeLine = timeLine;
        this.showSpan = showSpan;
        this.events = timeLine.events.filter(({time}) => time >= limits.first_time && time <= limits.last_time);
        this.leftOut = timeLine.rowCount - this.events.length;
        this.limits = limits;
        this.lanes = [...new Set(this.events.map(({told}) => told.event))];
        this.height = this.lanes.length * laneHeight + axisHeight;
        this.build();
    }

    build() {
        const title = 'Time line';
        const remark = 'Every time of every row, by what it tells, in UTC; install dates are local days. Drag, or turn the wheel with Ctrl, to zoom in on a span; click a bar to list its rows.'
            + notDrawn(this.leftOut, 'time', this.limits);
        if (this.events.length === 0) {
            this.element = nothing(title, remark);
            return;
        }
        const first = this.events[0].time;
        const last = this.events[this.events.length - 1].time;
        const edge = Math.max(3600, (last - first) / 50);
        this.whole = {from: first - edge, to: last + edge};
        this.svg = makeSvg('svg', {class: 'zoomable', viewBox: `0 0 ${pictureWidth} ${this.height}`, role: 'img', tabindex: '0',
            'aria-label': `${title}: ${counted(this.events.length, 'time')} from ${dayText(first)} to ${dayText(last)}. Keys: plus and minus zoom, arrows move, 0 shows all.`});
        this.span = make('span', {class: 'count', role: 'status', 'aria-live': 'polite'});
        const button = (label, action, name = label) => make('button', {type: 'button', 'aria-label': name, onclick: action}, label);
        this.element = make('figure', {id: 'time-line'}, make('figcaption', {}, title, make('small', {}, remark)), this.svg,
            make('div', {class: 'controls'},
                button('+', () => this.zoom(0.5), 'Zoom in'), button('\u2212', () => this.zoom(2), 'Zoom out'),
                button('\u25c0', () => this.move(-0.25), 'Earlier'), button('\u25b6', () => this.move(0.25), 'Later'),
                button('All', () => this.show(this.whole)), button('List these rows', () => this.list(this.shown)), this.span));
        this.listen();
        this.show(this.whole);
    }

    listen() {
        this.svg.addEventListener('wheel', event => {
            if (!event.ctrlKey)
                return; // the page scrolls
            event.preventDefault();
            this.zoom(event.deltaY < 0 ? 0.8 : 1.25, this.timeAt(event));
        }, {passive: false});
        this.svg.addEventListener('keydown', event => {
            const action = {'+': () => this.zoom(0.5), '=': () => this.zoom(0.5), '-': () => this.zoom(2), '0': () => this.show(this.whole),
                ArrowLeft: () => this.move(-0.25), ArrowRight: () => this.move(0.25), Enter: () => this.list(this.shown)}[event.key];
            if (action) {
                event.preventDefault();
                action();
            }
        });
        this.svg.addEventListener('pointerdown', event => { this.dragFrom = this.timeAt(event); this.svg.setPointerCapture?.(event.pointerId); });
        this.svg.addEventListener('pointermove', event => this.drawSelection(event));
        this.svg.addEventListener('pointerup', event => this.endDrag(event));
        this.svg.addEventListener('pointercancel', () => { this.dragFrom = undefined; this.selection?.remove(); });
    }

    xAt(event) {
        const box = this.svg.getBoundingClientRect();
        return (event.clientX - box.left) / box.width * pictureWidth;
    }
    timeAt(event) {
        const part = (this.xAt(event) - labelWidth) / (pictureWidth - labelWidth - 10);
        return this.shown.from + Math.min(1, Math.max(0, part)) * (this.shown.to - this.shown.from);
    }
    drawSelection(event) {
        if (this.dragFrom === undefined)
            return;
        const [from, to] = [this.dragFrom, this.timeAt(event)].sort((a, b) => a - b);
        this.selection?.remove();
        this.selection = makeSvg('rect', {class: 'selection', x: this.scale(from), y: 0, width: Math.max(0, this.scale(to) - this.scale(from)), height: this.height - axisHeight});
        this.svg.append(this.selection);
    }
    endDrag(event) {
        if (this.dragFrom === undefined)
            return;
        const [from, to] = [this.dragFrom, this.timeAt(event)].sort((a, b) => a - b);
        this.dragFrom = undefined;
        this.selection?.remove();
        if (this.scale(to) - this.scale(from) > 6)
            return this.show({from, to});
        const bin = this.binAt(event);
        if (bin)
            this.list(bin, bin.lane);
    }

    zoom(factor, around = (this.shown.from + this.shown.to) / 2) {
        this.show({from: around + (this.shown.from - around) * factor, to: around + (this.shown.to - around) * factor});
    }
    move(part) {
        const by = (this.shown.to - this.shown.from) * part;
        this.show({from: this.shown.from + by, to: this.shown.to + by});
    }
    show({from, to}) {
        const least = 60;
        const length = Math.min(Math.max(to - from, least), this.whole.to - this.whole.from);
        const begin = Math.min(Math.max(from, this.whole.from), this.whole.to - length);
        this.shown = {from: begin, to: begin + length};
        this.draw();
    }

    /** How many times of each lane lie in each slice of the shown span. */
    bins() {
        const binCount = 200;
        const {from, to} = this.shown;
        const counts = this.lanes.map(() => new Uint32Array(binCount));
        const shown = [];
        const lanes = new Map(this.lanes.map((lane, place) => [lane, place]));
        let total = 0;
        for (const {time, told} of this.events) {
            if (time < from || time > to)
                continue;
            ++counts[lanes.get(told.event)][Math.min(binCount - 1, Math.floor((time - from) / (to - from) * binCount))];
            ++total;
            shown[0] ??= time;
            shown[1] = time;
        }
        return {counts, total, shown, width: (to - from) / binCount};
    }
    draw() {
        const {from, to} = this.shown;
        const {scale, marks} = timeAxis(from, to, this.height, 6);
        this.scale = scale;
        this.binned = this.bins();
        const {counts, total, shown, width} = this.binned;
        const most = Math.max(1, ...counts.map(lane => Math.max(...lane)));
        const bars = counts.flatMap((lane, place) => Array.from(lane, (count, slice) => {
            if (count === 0)
                return '';
            const size = 4 + (laneHeight - 10) * Math.sqrt(count / most);
            const begin = from + slice * width;
            return bar(scale(begin), (place + 1) * laneHeight - size - 1, 4, size,
                `${this.lanes[place]}: ${counted(count, 'time')} from ${new Date(begin * 1000).toISOString().slice(0, 16)} on`);
        }));
        this.svg.replaceChildren(...marks, ...this.lanes.map(laneLabel), ...bars);
        const text = to - from > 2 * secondsOfDay ? dayText : secondText;
        this.span.textContent = total === 0 ? `No time from ${text(from)} to ${text(to)}` : `${counted(total, 'time')} from ${text(shown[0])} to ${text(shown[1])}`;
    }
    /** The slice of the lane under the pointer, if there is a bar in it. */
    binAt(event) {
        const box = this.svg.getBoundingClientRect();
        const lane = Math.floor((event.clientY - box.top) / box.height * this.height / laneHeight);
        const slice = Math.floor((this.timeAt(event) - this.shown.from) / this.binned.width);
        if (!this.binned.counts[lane]?.[slice])
            return null;
        const from = this.shown.from + slice * this.binned.width;
        return {from, to: from + this.binned.width, lane: this.lanes[lane]};
    }
    /** Lists the rows of a span, its end not included, of one lane or of all. */
    list({from, to}, lane = null) {
        const holds = event => event.time >= from && event.time < to && (lane === null || event.told.event === lane);
        this.showSpan({holds, label: `${lane === null ? '' : `${lane}: `}${secondText(from)} to ${secondText(to)}`});
    }
}
