// What the room does in JavaScript itself.
#include "platform/osa/javascript/Prelude.h"

namespace osa::script {

const char16_t kPrelude[] =
    uR"js((function () {
"use strict";
const parse = Reflect.parse;
const tagOf = value => Object.prototype.toString.call(value).slice(8, -1);
const offset = Function.prototype.call.bind(Date.prototype.getTimezoneOffset);
const time = Function.prototype.call.bind(Date.prototype.getTime);
const source = Function.prototype.call.bind(Function.prototype.toString);

// A toString of the value's own kind, not the one that every object has.
function ownText(value) {
    for (let o = value; o !== null; o = Object.getPrototypeOf(o)) {
        const above = Object.getPrototypeOf(o);
        if (above !== null && Object.prototype.hasOwnProperty.call(o, "toString"))
            return typeof value.toString === "function" ? value.toString : null;
    }
    return null;
}

// How many characters may still be made, for text that stands for more than there is memory.
let room = 0;
const full = {};
function spend(count) {
    room -= count;
    if (room < 0) throw full;
}
function counted(text) {
    spend(text.length);
    return text;
}

function primitive(value, human) {
    switch (typeof value) {
        case "string":
            spend(value.length);
            return human ? value : counted(JSON.stringify(value));
        case "number": return counted(Object.is(value, -0) ? "-0" : String(value));
        case "bigint": return counted(value + (human ? "" : "n"));
        case "function": return counted(source(value));
        default: return counted(String(value));
    }
}

function object(value, human, above) {
    spend(8);
    const inner = item => display(item, human, above);
    const items = list => "[" + Array.from(list, inner).join(human ? ", " : ",") + "]";
    if (Array.isArray(value)) return items(value);
    const tag = tagOf(value);
    if (ArrayBuffer.isView(value) && tag !== "DataView")
        return (human ? "" : "new " + tag + "(") + items(value) + (human ? "" : ")");
    switch (tag) {
        case "File": case "Descriptor": return primitive(value.toString(), human);
        case "Date":
            return human ? value.toString() : "new Date(" + JSON.stringify(value.toJSON()) + ")";
        case "RegExp": case "Error": return counted(String(value));
        case "String": case "Number": case "Boolean": case "BigInt": case "Symbol":
            return primitive(value.valueOf(), human);
        case "ArrayBuffer":
            return (human ? "" : "new Uint8Array(") + items(new Uint8Array(value)) +
                   (human ? "" : ").buffer");
        case "Map": case "Set": return (human ? "" : "new " + tag + "(") + items(value) + (human ? "" : ")");
    }
    const text = human ? ownText(value) : null;
    if (text !== null) return counted(String(value));
    const field = key => primitive(key, human) + (human ? ": " : ":") + inner(value[key]);
    return "{" + Object.keys(value).map(field).join(human ? ", " : ",") + "}";
}

function display(value, human, above) {
    if (typeof value !== "object" || value === null) return primitive(value, human);
    if (above.includes(value)) {
        if (human) return "\u2026";
        throw new TypeError("an object that holds itself has no source");
    }
    return object(value, human, above.concat([value]));
}

function bound(pattern, names) {
    if (!pattern) return;
    if (pattern.type === "Identifier") names.push(pattern.name);
    (pattern.elements || []).forEach(element => bound(element, names));
    (pattern.properties || []).forEach(property => bound(property.value || property.expression, names));
    if (pattern.left) bound(pattern.left, names);
    if (pattern.expression) bound(pattern.expression, names);
}

function lexicals(text) {
    let body;
    try { body = parse(text, {loc: false}).body; } catch (error) { return null; }
    const names = [];
    for (const statement of body) {
        if (statement.type === "VariableDeclaration" && statement.kind !== "var")
            statement.declarations.forEach(declaration => bound(declaration.id, names));
        if (statement.type === "ClassStatement") bound(statement.id, names);
    }
    return names;
}

// A script's own callable may be handed an array of this realm; nothing can be changed from there.
const frozen = new Set();
function freeze(value) {
    if (value === null || typeof value !== "object" && typeof value !== "function") return;
    if (frozen.has(value)) return;
    frozen.add(value);
    freeze(Object.getPrototypeOf(value));
    for (const key of Reflect.ownKeys(value)) {
        const property = Object.getOwnPropertyDescriptor(value, key);
        [property.value, property.get, property.set].forEach(freeze);
    }
    Object.freeze(value);
}
[globalThis, function* () {}, async function () {}, async function* () {}, [][Symbol.iterator](),
 ""[Symbol.iterator](), new Map().entries(), new Set().entries(), "".matchAll(/a/g)].forEach(freeze);

// What is shown may run a script that has something shown.
function within(limit, value, human) {
    const before = room;
    room = limit;
    try {
        return display(value, human, []);
    } catch (error) {
        if (error === full) return null;
        throw error;
    } finally {
        room = before;
    }
}

return {
    display: (value, human, limit) => within(limit, value, human),
    lexicals,
    unboxed: value => value.valueOf(),
    toLocal: date => time(date) - offset(date) * 60000
};
})())js";

const char16_t kFurniture[] =
    uR"js((function () {
"use strict";
const define = Object.defineProperty;
const table = function (event, handler) {
    if (typeof event !== "string" || event.length !== 8)
        throw new TypeError("an event is eight characters: class and ID");
    if (typeof handler !== "function") throw new TypeError("a handler is a function");
    define(table, event,
        {value: handler, writable: true, enumerable: true, configurable: true});
};

const nothing = () => {};
define(globalThis, "on", {value: table});
define(globalThis, "console", {value:
    {log: nothing, info: nothing, warn: nothing, error: nothing, debug: nothing}});
})())js";

}  // namespace osa::script
