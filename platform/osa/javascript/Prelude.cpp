// What the room does in JavaScript itself.
#include "platform/osa/javascript/Prelude.h"

namespace osa::script {

const char16_t kPrelude[] =
    uR"js((function (classOf) {
"use strict";
const uncurried = method => Function.prototype.call.bind(method);
const getter = (prototype, name) =>
    uncurried(Object.getOwnPropertyDescriptor(prototype, name).get);
const offset = uncurried(Date.prototype.getTimezoneOffset);
const time = uncurried(Date.prototype.getTime);
const source = uncurried(Function.prototype.toString);
// The language's own, as an object's own may tell anything.
const viewKind = getter(Object.getPrototypeOf(Uint8Array.prototype), Symbol.toStringTag);
const viewLength = getter(Object.getPrototypeOf(Uint8Array.prototype), "length");
const boxed = {__proto__: null};
for (const box of [String, Number, Boolean, BigInt, Symbol])
    boxed[box.name] = uncurried(box.prototype.valueOf);
const collected = {__proto__: null, Map: uncurried(Map.prototype.entries),
    Set: uncurried(Set.prototype.values)};
const unboxed = value => boxed[classOf(value)](value);

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
    function items(list, count) {
        let text = "";
        for (let i = 0; i < count; ++i) {
            spend(1);
            text += (i === 0 ? "" : human ? ", " : ",") + inner(list[i]);
        }
        return "[" + text + "]";
    }
    const made = (name, text) => human ? text : "new " + name + "(" + text + ")";
    const kind = classOf(value), view = viewKind(value);
    if (view !== undefined) return made(view, items(value, viewLength(value)));
    if (kind in boxed) return primitive(unboxed(value), human);
    if (kind in collected) {
        const list = [...collected[kind](value)];
        return made(kind, items(list, list.length));
    }
    switch (kind) {
        case "Array": return items(value, value.length);
        case "File": case "Descriptor": return primitive(String(value), human);
        case "Date":
            if (human) return counted(String(value));
            return made(kind, isNaN(time(value)) ? "NaN"
                : "\"" + new Date(time(value)).toISOString() + "\"");
        case "RegExp": case "Error": return counted(String(value));
        case "ArrayBuffer": {
            const bytes = new Uint8Array(value);
            return made("Uint8Array", items(bytes, bytes.length)) + (human ? "" : ".buffer");
        }
    }
    const text = human && kind !== "Proxy" ? ownText(value) : null;
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
function within(limit, make) {
    const before = room;
    room = limit;
    try {
        return make();
    } catch (error) {
        if (error === full) return null;
        throw error;
    } finally {
        room = before;
    }
}

return {
    display: (value, human, limit) => within(limit, () => display(value, human, [])),
    line: (values, limit) => within(limit, () =>
        values.map(value => display(value, true, [])).join(" ").replaceAll("\0", "\ufffd")),
    unboxed,
    toLocal: date => time(date) - offset(date) * 60000
};
}))js";

const char16_t kFurniture[] =
    uR"js((function (log) {
"use strict";
const define = Object.defineProperty;
const table = function (event, handler) {
    if (typeof event !== "string" || event.length !== 8)
        throw new TypeError("an event is eight characters: class and ID");
    if (typeof handler !== "function") throw new TypeError("a handler is a function");
    define(table, event,
        {value: handler, writable: true, enumerable: true, configurable: true});
};

define(globalThis, "on", {value: table});
define(globalThis, "console", {value: {log, info: log, warn: log, error: log, debug: log}});
}))js";

}  // namespace osa::script
