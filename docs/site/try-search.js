// Searches as a reader would, without a browser: mujs try-search.js FOLDER QUERY=ADDRESS...
// One of the first five entries that are found must have an address that begins like that. For "QUERY=" nothing may be
// found.
var folder = scriptArgs[0];
load(folder + "/search-index.js");
load(folder + "/search.js");
scriptArgs.slice(1).forEach(function (expected) {
    var query = expected.split("=")[0];
    var wanted = expected.split("=")[1];
    var addresses = searchSite(query).slice(0, 5).map(function (entry) { return entry[2]; });
    var isRight = wanted === "" ? addresses.length === 0 :
        addresses.some(function (address) { return address.indexOf(wanted) === 0; });
    if (!isRight) {
        print("A search for \"" + query + "\" leads to \"" + addresses.join(" ") + "\" and not to \"" + wanted + "\"");
        quit(1);
    }
});
