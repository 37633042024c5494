// Elements are made here alone. What comes from the evidence becomes text, never markup.

const svgNamespace = 'http://www.w3.org/2000/svg';

function withAttributes(made, attributes, children) {
    for (const [name, value] of Object.entries(attributes)) {
        if (name.startsWith('on'))
            made.addEventListener(name.slice(2), value);
        else if (value !== null && value !== undefined && value !== false)
            made.setAttribute(name, value === true ? '' : value);
    }
    // One by one: a call takes no more than some 100,000 arguments.
    for (const child of children)
        made.append(child);
    return made;
}

function make(tag, attributes = {}, ...children) {
    return withAttributes(document.createElement(tag), attributes, children);
}

function makeSvg(tag, attributes = {}, ...children) {
    return withAttributes(document.createElementNS(svgNamespace, tag), attributes, children);
}

function embedded(id) {
    return JSON.parse(document.getElementById(id).textContent);
}

const grouped = new Intl.NumberFormat('en');

/** Appends the children of a list to an element. */
function withChildren(made, children) {
    for (const child of children)
        made.append(child);
    return made;
}

/** "1 row", "2,000 rows" */
function counted(number, noun) {
    return `${grouped.format(number)} ${noun}${number === 1 ? '' : 's'}`;
}
