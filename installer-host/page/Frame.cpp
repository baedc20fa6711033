#include "installer-host/page/Frame.h"

#include "installer-host/page/Embedded.h"
#include "installer-host/page/Pieces.h"

namespace host::page {

namespace {

Markup metaTag(const char* name, const std::string& content) {
    return element("meta", {{"name", name}, {"content", content}}, {});
}

Markup policy() {
    return element("meta",
                   {{"http-equiv", "Content-Security-Policy"},
                    {"content", std::string("default-src 'none'; style-src ") + STYLE_HASH + "; script-src " +
                                    SCRIPT_HASH + "; base-uri 'none'; form-action 'none'"}},
                   {});
}

Markup headElement(const Head& head) {
    return element("head", element("meta", {{"charset", "utf-8"}}, {}) + policy() +
                               metaTag("viewport", "width=device-width, initial-scale=1") +
                               metaTag("color-scheme", "light dark") + metaTag("referrer", "no-referrer") +
                               element("title", head.title + ": " + head.kind) +
                               element("style", Markup::embedded(STYLE)));
}

Markup header(const Head& head) {
    return element("header", element("p.kind", head.kind) + element("h1", head.title) +
                                 element("p.verdict", head.verdict) + head.introduction);
}

Markup footer(const Json& document) {
    return element("footer", element("p", "Written by installer-host " + document.at("host").get<std::string>() +
                                              ", report version " + document.at("schema").get<std::string>() + "."));
}

}  // namespace

std::string wholePage(const Head& head, const Markup& contents, const Json& document) {
    const Markup skip = element("a.skip", {{"href", "#contents"}}, "Skip to the contents");
    const Markup main = element("main", {{"id", "contents"}, {"tabindex", "-1"}}, contents);
    const Markup script = element("script", Markup::embedded(SCRIPT));
    return "<!DOCTYPE html>\n" +
           element("html", {{"lang", "en"}},
                   headElement(head) + element("body", skip + header(head) + main + footer(document) + script))
               .html() +
           "\n";
}

}  // namespace host::page
