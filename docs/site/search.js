// The search of the site, which works from a file: it looks into searchIndex, which search-index.js has set, for entries
// with all words of a query.

// Returns the entries, the best first. A word counts most where it is a whole word of a title, and more in a text that has
// it often.
function searchSite(query) {
    var words = query.toLowerCase().split(/[\s:()]+/).filter(Boolean);
    if (words.length === 0) {
        return [];
    }
    return searchIndex
        .map(function (entry, position) {
            return { entry: entry, position: position, score: scoreOf(entry, words) };
        })
        .filter(function (found) { return found.score > 0; })
        .sort(function (a, b) { return b.score - a.score || a.position - b.position; })
        .map(function (found) { return found.entry; });
}

// 0 if a word is missing.
function scoreOf(entry, words) {
    var page = entry[0].toLowerCase();
    var section = entry[1].toLowerCase();
    var text = entry[3].toLowerCase();
    var total = section === "" ? 0.01 : 0; // of equal ones first
    for (var i = 0; i < words.length; ++i) {
        var score = scoreOfTitle(section || page, words[i]) || (page.indexOf(words[i]) >= 0 ? 2 : 0) ||
            scoreOfText(text, words[i]);
        if (score === 0) {
            return 0;
        }
        total += score;
    }
    return total;
}

function scoreOfTitle(title, word) {
    if (title.indexOf(word) < 0) {
        return 0;
    }
    return (" " + title.replace(/[^a-z0-9_~.]+/g, " ") + " ").indexOf(" " + word + " ") >= 0 ? 30 : 10;
}

// Words that begin so count, up to nine of them, and otherwise a little what has it inside of a word.
function scoreOfText(text, word) {
    var beginnings = (" " + text.replace(/[^a-z0-9_]+/g, " ")).split(" " + word).length - 1;
    return beginnings > 0 ? Math.min(beginnings, 9) / 10 : text.indexOf(word) >= 0 ? 0.05 : 0;
}

// The part of a text around the first word of a query.
function excerptOf(text, query) {
    var word = query.toLowerCase().split(/[\s:()]+/).filter(Boolean)[0];
    var place = Math.max(0, text.toLowerCase().indexOf(word) - 60);
    return (place > 0 ? "... " : "") + text.substr(place, 160) + (place + 160 < text.length ? " ..." : "");
}

function showFound(list, query) {
    var found = searchSite(query);
    list.textContent = "";
    list.hidden = query.trim() === "";
    found.slice(0, 30).forEach(function (entry) {
        var item = list.appendChild(document.createElement("li"));
        var link = item.appendChild(document.createElement("a"));
        link.href = entry[2];
        link.textContent = entry[1] ? entry[1] + " (" + entry[0] + ")" : entry[0];
        item.appendChild(document.createElement("p")).textContent = excerptOf(entry[3], query);
    });
    if (found.length === 0) {
        list.appendChild(document.createElement("li")).textContent = "Nothing found.";
    }
}

function offerSearch(field, list) {
    field.addEventListener("input", function () { showFound(list, field.value); });
    field.addEventListener("keydown", function (event) {
        var first = list.querySelector("a");
        if (event.key === "Escape") {
            field.value = "";
            list.hidden = true;
        } else if (event.key === "Enter") {
            event.preventDefault();
            if (first && !list.hidden) {
                window.location = first.href;
            }
        }
    });
    // A link to a place in the page that is open shows that place.
    list.addEventListener("click", function () { list.hidden = true; });
}

if (typeof document !== "undefined") {
    offerSearch(document.getElementById("site-search"), document.getElementById("site-found"));
}
