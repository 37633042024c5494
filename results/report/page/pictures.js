// The pictures. Rows and labels tell things apart, not colours, so that they can be read in grey.

const pictureWidth = 1000;
const labelWidth = 180;
const laneHeight = 34;
const axisHeight = 26;
const mostLanes = 14;
const mostSlices = 800; // of an axis: more are no pixels
const mostNumbers = 2000; // lines of the table below a picture

function dayText(seconds) {
    return new Date(seconds * 1000).toISOString().slice(0, 10);
}

function cut(text, length) {
    return text.length > length ? `${text.slice(0, length - 1)}\u2026` : text;
}

/** A picture with its title, what it does not show, and its numbers as a table. */
function figure(title, remark, picture, head, lines) {
    const body = withChildren(make('tbody'), lines.slice(0, mostNumbers).map(line =>
        make('tr', {}, ...line.map(cell => make('td', {}, String(cell))))));
    const table = make('table', {}, make('thead', {}, make('tr', {}, ...head.map(name => make('th', {scope: 'col'}, name)))), body);
    const summary = lines.length > mostNumbers ? `The first ${grouped.format(mostNumbers)} of ${grouped.format(lines.length)} numbers` : 'The numbers';
    return make('figure', {}, make('figcaption', {}, title, make('small', {}, remark)), picture,
        make('details', {}, make('summary', {}, summary), make('div', {class: 'scroll'}, table)));
}

function nothing(title, remark, isSelected = true) {
    return make('figure', {}, make('figcaption', {}, title, make('small', {}, remark)),
        make('p', {}, isSelected ? 'There is nothing to draw.' : 'The tables that this picture is drawn from are not in this report.'));
}

/** "3 times outside of 1990-01-01 to 2027-01-01 are not drawn." with a blank before it; empty for none. */
function notDrawn(count, noun, activity) {
    return count === 0 ? '' : ` ${counted(count, noun)} outside of ${dayText(activity.first_time)} to ${dayText(activity.last_time)} not drawn; the tables have them.`;
}

/** Marks of a time axis: years, months, days, hours or minutes, whichever fit. */
function timeMarks(from, to, most) {
    const steps = [60, 600, 3600, 6 * 3600, secondsOfDay, 7 * secondsOfDay];
    const step = steps.find(each => (to - from) / each <= most);
    const marks = [];
    if (step) {
        for (let time = Math.ceil(from / step) * step; time <= to; time += step)
            marks.push({time, label: step < secondsOfDay ? new Date(time * 1000).toISOString().slice(0, 16).replace('T', ' ') : dayText(time)});
        return marks;
    }
    const first = new Date(from * 1000);
    const months = [1, 3, 6, 12, 24, 60, 120].find(each => (to - from) / (each * 30.4 * secondsOfDay) <= most) ?? 240;
    for (let month = first.getUTCFullYear() * 12; ; month += months) {
        const time = Date.UTC(Math.floor(month / 12), month % 12, 1) / 1000;
        if (time > to)
            return marks;
        if (time >= from)
            marks.push({time, label: months >= 12 ? String(Math.floor(month / 12)) : dayText(time).slice(0, 7)});
    }
}

function timeAxis(from, to, height, most = 8) {
    const scale = time => labelWidth + (time - from) / Math.max(1, to - from) * (pictureWidth - labelWidth - 10);
    const marks = timeMarks(from, to, most).flatMap(({time, label}) => [
        makeSvg('line', {class: 'axis', x1: scale(time), x2: scale(time), y1: 0, y2: height - axisHeight}),
        makeSvg('text', {class: 'faint', x: scale(time), y: height - 8, 'text-anchor': scale(time) > pictureWidth - 60 ? 'end' : 'middle'}, label),
    ]);
    return {scale, marks};
}

function laneLabel(label, lane) {
    return makeSvg('text', {x: 8, y: lane * laneHeight + 21}, makeSvg('title', {}, label), cut(label, 26));
}

function bar(x, y, width, height, title) {
    return makeSvg('rect', {class: 'bar', x, y, width, height}, makeSvg('title', {}, title));
}

/** A picture of the children in these lists; hover texts tell the numbers. */
function picture(label, height, ...lists) {
    const svg = makeSvg('svg', {viewBox: `0 0 ${pictureWidth} ${height}`, role: 'img', 'aria-label': label});
    return lists.reduce(withChildren, svg);
}

/** An account, with its source where there are several. */
function accountLabel(account, source, hasSources) {
    return (account || '(the machine)') + (hasSources ? `, ${source}` : '');
}

/** The runs of each lane, in slices of as many days as an axis needs. */
function slicedRuns(days, lanes, from, to) {
    const length = Math.max(1, Math.ceil((to - from) / secondsOfDay / mostSlices)) * secondsOfDay;
    const slices = new Map();
    for (const {day, lane, runs} of days) {
        if (!lanes.has(lane))
            continue;
        const begin = from + Math.floor((day - from) / length) * length;
        const key = `${begin} ${lanes.get(lane)}`;
        const slice = slices.get(key) ?? {begin, lane, runs: 0};
        slice.runs += runs;
        slices.set(key, slice);
    }
    return {length, slices: [...slices.values()]};
}

/** Last runs by day, one lane an account. */
function activityPicture(activity, selection) {
    const title = 'Activity by day and account';
    const remark = 'Last runs that the accounts\u2019 shells noted, in UTC. Each entry keeps its last run alone: earlier runs have left no time.'
        + notDrawn(activity.runs_left_out, 'time', activity);
    if (activity.days.length === 0)
        return nothing(title, remark, selection.has('previously_executed_apps'));
    const hasSources = new Set(activity.days.map(({source}) => source)).size > 1;
    const days = activity.days.map(each => ({...each, lane: accountLabel(each.account, each.source, hasSources)}));
    const totals = new Map();
    for (const {lane, runs} of days)
        totals.set(lane, (totals.get(lane) ?? 0) + runs);
    const names = [...totals.keys()].sort((a, b) => totals.get(b) - totals.get(a)).slice(0, mostLanes);
    const left = totals.size - names.length;
    // The days are in their order.
    const from = days[0].day - secondsOfDay;
    const to = days[days.length - 1].day + 2 * secondsOfDay;
    const lanes = new Map(names.map((name, lane) => [name, lane]));
    const {length, slices} = slicedRuns(days, lanes, from, to);
    const most = slices.reduce((largest, {runs}) => Math.max(largest, runs), 0);
    const height = names.length * laneHeight + axisHeight;
    const {scale, marks} = timeAxis(from, to, height);
    const bars = slices.map(({begin, lane, runs}) => {
        const size = Math.max(3, runs / most * (laneHeight - 8));
        const span = length === secondsOfDay ? dayText(begin) : `${dayText(begin)} to ${dayText(begin + length - secondsOfDay)}`;
        return bar(scale(begin), (lanes.get(lane) + 1) * laneHeight - size - 2,
            Math.max(2, scale(length) - scale(0) - 1), size, `${span}, ${lane}: ${counted(runs, 'last run')}`);
    });
    return figure(title, remark + (left ? ` ${counted(left, 'account')} with fewer runs not drawn.` : ''),
        picture(title, height, marks, names.map(laneLabel), bars),
        ['day', 'account', 'last runs'], days.map(({day, lane, runs}) => [dayText(day), lane, runs]));
}

/** Uninstall keys by the month of their install date, else of their last write. */
function monthsPicture(activity, selection) {
    const title = 'Installations by month';
    const remark = 'Uninstall keys that are there, by the install date that the installer wrote, a local day; where it wrote none, by the time when the key was last written, in UTC.'
        + notDrawn(activity.keys_left_out, 'key', activity);
    const {months} = activity;
    if (months.length === 0)
        return nothing(title, remark, selection.has('install_apps_64') || selection.has('install_apps_32'));
    const numberOf = ({year, month}) => year * 12 + month - 1;
    const first = numberOf(months[0]);
    const count = numberOf(months[months.length - 1]) - first + 1;
    const most = months.reduce((largest, {keys}) => Math.max(largest, keys), 0);
    const height = 170;
    const room = height - axisHeight - 10;
    const width = (pictureWidth - labelWidth - 10) / count;
    const label = ({year, month}) => `${year}-${String(month).padStart(2, '0')}`;
    const every = Math.ceil(count / 12);
    const bars = months.map(each => {
        const size = Math.max(2, each.keys / most * room);
        return bar(labelWidth + (numberOf(each) - first) * width, height - axisHeight - size, Math.max(2, Math.min(width - 1, 40)), size,
            `${label(each)}: ${counted(each.keys, 'key')}`);
    });
    const marks = [];
    for (let place = 0; place < count; place += every) {
        const number = first + place;
        const x = labelWidth + place * width;
        marks.push(makeSvg('text', {class: 'faint', x, y: height - 8, 'text-anchor': x > pictureWidth - 60 ? 'end' : 'start'},
            label({year: Math.floor(number / 12), month: number % 12 + 1})));
    }
    return figure(title, remark, picture(title, height, [makeSvg('text', {x: 8, y: 21}, `most: ${counted(most, 'key')}`)], marks, bars),
        ['month', 'keys'], months.map(each => [label(each), each.keys]));
}

/** The programs that were counted most often. */
function runsPicture(programs) {
    const title = 'Programs by run count';
    const remark = 'Starts of programs that the shell counted, by program and account: the twenty with the most. Starts by shortcuts are counted apart and not drawn: see shortcut_count of the programs.';
    const [name, account, runs, source] = ['program', 'system_account', 'run_count', 'source_count_name'].map(each => programs?.column(each));
    if (!runs)
        return nothing(title, remark, false);
    const rows = [];
    for (let row = 0; row < programs.rowCount; ++row) {
        if (runs.at(row) > 0)
            rows.push(row);
    }
    rows.sort((a, b) => runs.at(b) - runs.at(a)).splice(20);
    if (rows.length === 0)
        return nothing(title, remark);
    const most = runs.at(rows[0]);
    const left = 430;
    const height = rows.length * 22 + 8;
    const labelOf = row => accountLabel(textOf(account.at(row)), textOf(source.at(row)), source.isShown);
    const bars = rows.flatMap((row, place) => {
        const label = `${textOf(name.at(row))} (${labelOf(row)})`;
        const size = Math.max(2, runs.at(row) / most * (pictureWidth - left - 90));
        return [makeSvg('text', {x: 8, y: place * 22 + 19}, makeSvg('title', {}, label), cut(label, 62)),
            bar(left, place * 22 + 6, size, 16, `${label}: ${runs.at(row)}`),
            makeSvg('text', {x: left + size + 6, y: place * 22 + 19}, grouped.format(runs.at(row)))];
    });
    return figure(title, remark, picture(title, height, bars), ['program', 'account', 'run count'],
        rows.map(row => [textOf(name.at(row)), labelOf(row), runs.at(row)]));
}
