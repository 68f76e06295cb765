// What is left of a script that is stored run-only.
#include "platform/osa/javascript/Reduction.h"

namespace osa::script {

/// Local variables are renamed by their spelling: all of one spelling at once, to one that is used
/// nowhere, which keeps what each of them refers to whatever the rules of scopes are. A spelling
/// stays when any variable of it may be one that is seen from outside, when a function or class may
/// take its name from it, and when the tree and the text do not agree about where it is.
const char16_t kReduction[] =
    uR"js((function () {
"use strict";
const lineEnd = /\r\n|[\n\r\u2028\u2029]/g;
const isBlank = code => code === 32 || code >= 9 && code <= 12 && code !== 10 ||
    code >= 160 && /\s/.test(String.fromCharCode(code));
const isWord = code => code >= 97 && code <= 122 || code >= 65 && code <= 90 ||
    code >= 48 && code <= 57 || code === 36 || code === 95 || code === 92 || code === 35 ||
    code >= 128 && !/\s/.test(String.fromCharCode(code));

// From the tree's places, which are lines and code points, to units of the text.
function placing(text) {
    const starts = [0, 0];
    for (const end of text.matchAll(lineEnd)) starts.push(end.index + end[0].length);
    if (!/[\ud800-\udbff][\udc00-\udfff]/.test(text))
        return place => starts[place.line] + place.column;
    const units = [], points = new Map();
    for (let unit = 0; unit < text.length; unit += text.codePointAt(unit) > 65535 ? 2 : 1) {
        points.set(unit, units.length);
        units.push(unit);
    }
    return place => units[points.get(starts[place.line]) + place.column];
}

// The words, where each begins, and the text in pieces.
function scan(text, expressions) {
    const pieces = [], words = [], braces = [];
    let at = 0, gap = false, fresh = true;
    const code = () => text.charCodeAt(at);
    function put(end) {
        if (gap && !fresh) pieces.push(" ");
        gap = fresh = false;
        pieces.push(text.slice(at, end));
        at = end;
    }
    function skip(end) {
        for (const found of text.slice(at, end).matchAll(lineEnd)) {
            pieces.push(found[0]);
            fresh = true;
        }
        gap = true;
        at = end;
    }
    function lineFrom(place) {
        let end = place;
        while (end < text.length && !/[\n\r\u2028\u2029]/.test(text[end])) ++end;
        return end;
    }
    function quoted(ends) {
        let end = at + 1;
        while (end < text.length && text[end] !== ends) end += text[end] === "\\" ? 2 : 1;
        put(Math.min(end + 1, text.length));
    }
    function template() {
        let end = at + 1;
        for (; end < text.length && text[end] !== "`"; ++end) {
            if (text[end] === "\\") ++end;
            else if (text[end] === "$" && text[end + 1] === "{") {
                braces.push(true);
                put(end + 2);
                return;
            }
        }
        put(Math.min(end + 1, text.length));
    }
    function expression() {
        let end = at + 1;
        for (let inside = false; end < text.length && (inside || text[end] !== "/"); ++end) {
            if (text[end] === "\\") ++end;
            else if (text[end] === "[") inside = true;
            else if (text[end] === "]") inside = false;
        }
        do ++end; while (end < text.length && isWord(text.charCodeAt(end)));
        put(Math.min(end, text.length));
    }
    function word() {
        let end = at;
        while (end < text.length && isWord(text.charCodeAt(end))) ++end;
        // Of these the tree does not tell the place.
        const isMember = !gap && pieces.at(-1) === "." && pieces.at(-2) !== ".";
        const begin = at;
        put(end);
        words.push({piece: pieces.length - 1, at: begin, isMember});
    }
    if (text.startsWith("#!")) skip(lineFrom(0));
    while (at < text.length) {
        const c = code(), unit = text[at];
        if (unit === "\r" && text[at + 1] === "\n") skip(at + 2);
        else if (isBlank(c) || unit === "\n" || unit === "\r" || c === 8232 || c === 8233)
            skip(at + 1);
        else if (unit === "/" && expressions.has(at)) expression();
        else if (unit === "/" && text[at + 1] === "/" || text.startsWith("<!--", at) ||
                 fresh && text.startsWith("-->", at)) skip(lineFrom(at));
        else if (unit === "/" && text[at + 1] === "*") {
            const end = text.indexOf("*/", at + 2);
            skip(end < 0 ? text.length : end + 2);
        } else if (unit === "'" || unit === '"') quoted(unit);
        else if (unit === "`" || unit === "}" && braces.pop()) template();
        else if (isWord(c)) word();
        else {
            if (unit === "{") braces.push(false);
            put(at + 1);
        }
    }
    return {pieces, words};
}
)js"
    // One literal has 65,535 characters at most, and fewer for some compilers.
    uR"js(
function bind(pattern, names) {
    if (!pattern) return;
    if (pattern.type === "Identifier") names.add(pattern.name);
    (pattern.elements || []).forEach(element => bind(element, names));
    (pattern.properties || []).forEach(property => bind(property.value || property.expression, names));
    bind(pattern.left, names);
    bind(pattern.expression, names);
}

const isFunction = type => type === "FunctionDeclaration" || type === "FunctionExpression" ||
    type === "ArrowFunctionExpression";
const takesName = node => node && node.id === null && (isFunction(node.type) || node.type === "ClassExpression");

// A scope, with names once it has any; `var` declares in its `home`.
function scope(above, isHome) {
    const made = {names: null, above, home: null};
    made.home = isHome ? made : above.home;
    return made;
}

const namesOf = within => within.names ??= new Set();

// Where the tree has regular expressions and names; the spellings that must stay. The places are
// taken out of the tree, as they are much of it.
function survey(program, place) {
    const top = scope(null, true), uses = new Map(), expressions = new Set(), kept = new Set(["arguments", "__proto__"]);
    const waiting = [program, top];
    let unsure = false;
    const visit = (node, within) => { if (node && node.type) waiting.push(node, within); };
    function note(node, within, pair) {
        const at = node.loc === null ? -1 : place(node.loc.start);
        if (at < 0 || uses.has(at)) kept.add(node.name);
        else uses.set(at, {node, within, pair, met: false});
        node.loc = null;
    }
    function use(node, within, pair) {
        if (node.name === "eval") unsure = true;
        note(node, within, pair);
    }
    // A name of something else than a variable.
    function plain(node) {
        if (node.type === "Identifier" && node.loc !== null) note(node, null, false);
    }
    function callable(node, within) {
        const outer = scope(within, false), inner = scope(outer, true);
        node.params.concat(node.rest || []).forEach(parameter => bind(parameter, namesOf(outer)));
        node.params.forEach((parameter, i) => {
            if (takesName(node.defaults[i])) bind(parameter, kept);
            visit(parameter, outer);
            visit(node.defaults[i], outer);
        });
        visit(node.rest, outer);
        visit(node.body, inner);
        // Methods have the name of their property, which is at no place.
        if (node.id && node.id.loc !== null) kept.add(node.id.name);
    }
    // Short for name and variable when both are at one place, also with a default.
    function property({key, value}, within) {
        const variable = value.type === "AssignmentExpression" ? value.left : value;
        const isShort = key.type === "Identifier" && variable.type === "Identifier" &&
            place(key.loc.start) === place(variable.loc.start);
        if (key.type !== "Identifier") visit(key, within);
        if (!isShort) plain(key);
        if (!isShort) return visit(value, within);
        use(variable, within, true);
        if (variable === value) return;
        if (takesName(value.right)) kept.add(variable.name);
        visit(value.right, within);
    }
    const blocks = ["BlockStatement", "ForStatement", "ForInStatement", "ForOfStatement",
        "SwitchStatement", "CatchClause"];
    function any(node, within) {
        const {type} = node;
        if (type === "Identifier") return use(node, within, false);
        if (type === "Literal") {
            if (node.value instanceof RegExp) expressions.add(place(node.loc.start));
            node.loc = null;
            return;
        }
        node.loc = null;
        if (isFunction(type)) return callable(node, within);
        if (type === "Property") return property(node, within);
        if (type === "MetaProperty") return;
        if (type === "WithStatement") unsure = true;
        if (type === "VariableDeclaration")
            node.declarations.forEach(one => bind(one.id, namesOf(node.kind === "var" ? within.home : within)));
        if (type === "VariableDeclarator" && takesName(node.init)) bind(node.id, kept);
        if (type === "AssignmentExpression" && takesName(node.right)) bind(node.left, kept);
        if ((type === "ClassStatement" || type === "ClassExpression") && node.id) kept.add(node.id.name);
        const inner = blocks.includes(type) || type === "StaticClassBlock"
            ? scope(within, type === "StaticClassBlock") : within;
        if (type === "CatchClause") bind(node.param, namesOf(inner));
        const isMember = type.endsWith("MemberExpression") && !node.computed;
        for (const key in node) {
            const part = node[key];
            if (key === "loc" || part === null || typeof part !== "object") continue;
            if (key === "label" || isMember && key === "property" || type === "CallImport" && key === "ident" ||
                (type === "ClassMethod" || type === "ClassField") && key === "name" && part.type === "Identifier")
                plain(part);
            else if (key === "discriminant") visit(part, within);
            else if (Array.isArray(part)) part.forEach(one => visit(one, inner));
            else visit(part, inner);
        }
    }
    while (waiting.length !== 0) {
        const within = waiting.pop();
        any(waiting.pop(), within);
    }
    namesOf(top).forEach(name => kept.add(name));
    return {uses, expressions, kept, unsure};
}
)js"
    uR"js(
function isLocal({node, within}) {
    for (let o = within; o.above !== null; o = o.above)
        if (o.names !== null && o.names.has(node.name)) return true;
    return false;
}

function rename({uses, kept}, {pieces, words}) {
    for (const {piece, at, isMember} of words) {
        const use = uses.get(at);
        if (use !== undefined && use.node.name === pieces[piece]) use.met = true;
        else if (use !== undefined || !isMember) kept.add(pieces[piece]);
    }
    for (const use of uses.values())
        if (!use.met || use.within !== null && !isLocal(use)) kept.add(use.node.name);
    const names = new Map();
    let last = 0;
    for (const {piece, at} of words) {
        const use = uses.get(at), name = pieces[piece];
        if (kept.has(name) || use === undefined || use.within === null) continue;
        if (!names.has(name)) {
            do ++last; while (kept.has("v" + last));
            names.set(name, "v" + last);
        }
        use.node.name = names.get(name);
        pieces[piece] = use.pair ? name + ":" + use.node.name : use.node.name;
    }
}

// The tree as a list, but for places.
function* flat(program) {
    const waiting = [program];
    while (waiting.length !== 0) {
        const value = waiting.pop();
        if (value === null || typeof value !== "object") yield value;
        else if (value instanceof RegExp) yield String(value);
        else if (Array.isArray(value)) {
            yield value.length;
            for (const item of value) waiting.push(item);
        } else {
            for (const key in value)
                if (key !== "loc" && key !== "shorthand") waiting.push(value[key]);
        }
    }
}

function reduce(text) {
    const tree = Reflect.parse(text);
    let found = survey(tree, placing(text));
    let scanned = scan(text, found.expressions);
    if (!found.unsure) rename(found, scanned);
    found = null;
    const reduced = scanned.pieces.join("");
    scanned = null;
    const before = flat(tree);
    for (const value of flat(Reflect.parse(reduced, {loc: false}))) {
        const {value: known, done} = before.next();
        if (done || !Object.is(value, known)) return null;
    }
    return before.next().done ? reduced : null;
}
return text => {
    const reduced = reduce(text);
    if (reduced === null) throw new Error("a script that cannot be stored run-only");
    return reduced;
};
})())js";

}  // namespace osa::script
