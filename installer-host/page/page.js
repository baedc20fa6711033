// Comfort on top of a page that works without it: arrow keys in the grid, a filter over the cases, and opening what a link
// leads to in browsers that do not do so themselves.
"use strict";

/// Opens everything around the element that the address names.
function reveal() {
    const target = document.getElementById(decodeURIComponent(location.hash.slice(1)));
    for (let around = target; around; around = around.parentElement) {
        if (around instanceof HTMLDetailsElement) {
            around.open = true;
        }
    }
    if (target) {
        target.scrollIntoView();
    }
}

/// The link in the cell that lies so many rows and columns away, or nothing.
function linkBeside(link, rows, columns) {
    const cell = link.closest("td");
    const row = cell.parentElement;
    const body = row.parentElement;
    const target = body.rows[row.sectionRowIndex + rows]?.cells[cell.cellIndex + columns];
    return target?.querySelector("a");
}

const ARROWS = { ArrowUp: [-1, 0], ArrowDown: [1, 0], ArrowLeft: [0, -1], ArrowRight: [0, 1] };

function moveInGrid(event) {
    const arrow = ARROWS[event.key];
    const link = event.target.closest(".grid td a");
    const next = arrow && link && linkBeside(link, ...arrow);
    if (next) {
        event.preventDefault();
        next.focus();
    }
}

function button(text, action) {
    const result = document.createElement("button");
    result.type = "button";
    result.textContent = text;
    result.addEventListener("click", action);
    return result;
}

/// Adds the filter and the buttons above the list of cases.
function addCaseTools(list) {
    const cases = [...list.children];
    const label = document.createElement("label");
    const words = document.createElement("input");
    const count = document.createElement("span");
    words.type = "search";
    label.append("Show only cases with ", words);
    count.setAttribute("role", "status");
    words.addEventListener("input", () => {
        const wanted = words.value.toLowerCase().split(/\s+/);
        for (const one of cases) {
            const text = one.querySelector("summary").textContent.toLowerCase();
            one.hidden = !wanted.every((word) => text.includes(word));
        }
        count.textContent = `${cases.filter((one) => !one.hidden).length} of ${cases.length} shown`;
    });
    const setAll = (isOpen) => () => cases.forEach((one) => (one.firstElementChild.open = isOpen && !one.hidden));
    const tools = document.createElement("div");
    tools.className = "tools";
    tools.append(label, count, button("Open all", setAll(true)), button("Close all", setAll(false)));
    list.before(tools);
}

addEventListener("hashchange", reveal);
document.addEventListener("keydown", moveInGrid);
document.querySelectorAll("ul.cases").forEach(addCaseTools);
if (location.hash) {
    reveal();
}
