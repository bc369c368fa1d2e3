// Searches as a reader would, without a browser: mujs try-search.js FOLDER QUERY=ADDRESS...
// The address of the first entry that is found must begin like that. For "QUERY=" nothing may be found.
var folder = scriptArgs[0];
load(folder + "/search-index.js");
load(folder + "/search.js");
scriptArgs.slice(1).forEach(function (expected) {
    var query = expected.split("=")[0];
    var wanted = expected.split("=")[1];
    var found = searchSite(query);
    var address = found.length ? found[0][2] : "";
    if (wanted === "" ? address !== "" : address.indexOf(wanted) !== 0) {
        print("A search for \"" + query + "\" leads to \"" + address + "\" and not to \"" + wanted + "\"");
        quit(1);
    }
});
