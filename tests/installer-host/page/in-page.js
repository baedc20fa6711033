// What the tests ask a page, from inside.

/// The red, green, blue and alpha of a colour, from 0 to 1.
function channels(colour) {
    const numbers = colour.match(/[\d.]+/g).map(Number);
    return [numbers[0] / 255, numbers[1] / 255, numbers[2] / 255, numbers[3] ?? 1];
}

function luminance(colour) {
    const [red, green, blue] = channels(colour).map((value) => (value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4));
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/// The background that the element's text stands on. Every colour of these pages is opaque or fully transparent.
function background(element) {
    for (let around = element; around; around = around.parentElement) {
        const colour = getComputedStyle(around).backgroundColor;
        if (channels(colour)[3] > 0) {
            return colour;
        }
    }
    return "rgb(255, 255, 255)";
}

function contrast(element, pseudo) {
    const [dark, light] = [luminance(getComputedStyle(element, pseudo).color), luminance(background(element))].sort((a, b) => a - b);
    return (light + 0.05) / (dark + 0.05);
}

/// The texts with too little contrast, and how many were looked at.
function poorContrasts() {
    const poor = [];
    let count = 0;
    for (const element of document.body.querySelectorAll("*")) {
        const hasText = [...element.childNodes].some((node) => node.nodeType === Node.TEXT_NODE && node.data.trim());
        const pseudo = getComputedStyle(element, "::before").content !== "none" ? "::before" : null;
        if (element.checkVisibility() && (hasText || pseudo)) {
            const ratio = contrast(element, hasText ? null : pseudo);
            count += 1;
            if (ratio < 4.5) {
                poor.push(`${ratio.toFixed(2)}: ${element.outerHTML.slice(0, 80)}`);
            }
        }
    }
    return { poor, count };
}

/// The first elements that stick out on the right, the innermost ones.
function tooWide() {
    const isOut = (element) => element.getBoundingClientRect().right > document.documentElement.clientWidth + 0.5;
    const isInnermost = (element) => isOut(element) && ![...element.children].some(isOut);
    return [...document.body.querySelectorAll("*")].filter(isInnermost).slice(0, 3).map((element) => element.outerHTML);
}

function openAll() {
    document.querySelectorAll("details").forEach((element) => (element.open = true));
}

/// The text of what has the focus.
function focused() {
    return document.activeElement.textContent.trim();
}
