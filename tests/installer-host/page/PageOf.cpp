// Prints the page of the document on standard input.

#include <iostream>

#include "installer-host/page/HtmlPage.h"

int main() {
    std::cout << host::htmlPage(host::Json::parse(std::cin));
}
