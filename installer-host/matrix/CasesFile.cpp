#include "installer-host/matrix/CasesFile.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "installer-host/ExitStatus.h"
#include "installer-host/InputFile.h"
#include "installer-host/JsonInput.h"

namespace host {

namespace {

constexpr const char* COLUMNS[] = {"product", "language", "status"};
constexpr const char* BYTE_ORDER_MARK = "\xEF\xBB\xBF";

bool isColumn(const std::string& name) {
    return std::find(std::begin(COLUMNS), std::end(COLUMNS), name) != std::end(COLUMNS);
}

std::int32_t codeOf(const std::string& text, const std::string& column) {
    std::int32_t code = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, code);
    if (error != std::errc() || stop != end) {
        throw std::invalid_argument("'" + text + "' is not the code of a " + column);
    }
    return code;
}

void set(CaseLine& line, const std::string& column, const std::string& text) {
    if (column == "status") {
        line.status = text;
    } else {
        (column == "product" ? line.product : line.language) = codeOf(text, column);
    }
}

/// The fields of a line of CSV. One in double quotes may hold commas, and a double quote that is doubled.
std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields{""};
    bool isQuoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == ',' && !isQuoted) {
            fields.emplace_back();
        } else if (line[i] != '"') {
            fields.back() += line[i];
        } else if (isQuoted && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back() += line[++i];
        } else {
            isQuoted = !isQuoted;
        }
    }
    if (isQuoted) {
        throw std::invalid_argument("a double quote is missing");
    }
    return fields;
}

void requireHeader(const std::vector<std::string>& header) {
    for (const std::string& name : header) {
        if (!isColumn(name) || std::count(header.begin(), header.end(), name) > 1) {
            throw std::invalid_argument(
                "the columns are product, language and status, with commas between them and "
                "each once, not '" +
                name + "'");
        }
    }
    if (std::find(header.begin(), header.end(), COLUMNS[0]) == header.end()) {
        throw std::invalid_argument("the header lacks the column product");
    }
}

CaseLine lineOf(const std::vector<std::string>& header, const std::vector<std::string>& fields) {
    if (fields.size() != header.size()) {
        throw std::invalid_argument("the header has " + std::to_string(header.size()) + " columns, this line has " +
                                    std::to_string(fields.size()));
    }
    CaseLine line;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        set(line, header[i], fields[i]);
    }
    return line;
}

std::vector<CaseLine> fromCsv(const std::string& text, std::size_t& number) {
    std::istringstream stream(text);
    std::vector<std::string> header;
    std::vector<CaseLine> lines;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty()) {
            continue;
        }
        if (header.empty()) {
            header = fieldsOf(line);
            requireHeader(header);
        } else {
            lines.push_back(lineOf(header, fieldsOf(line)));
        }
    }
    return lines;
}

std::vector<CaseLine> fromJson(const std::string& text, std::size_t& number) {
    using nlohmann::json;
    std::vector<CaseLine> lines;
    const json cases = parsedJson<json>(text);
    if (!cases.is_array()) {
        throw std::invalid_argument("the file holds no array");
    }
    for (const json& one : cases) {
        ++number;
        if (!one.is_object() || !one.contains("product")) {
            throw std::invalid_argument("it is not an object with a product");
        }
        CaseLine& line = lines.emplace_back();
        for (const auto& [name, value] : one.items()) {
            if (!isColumn(name) || (name == "status" ? !value.is_string() : !value.is_number_integer())) {
                throw std::invalid_argument("a case has the members product, language and status, a text, not \"" +
                                            name + "\": " + value.type_name());
            }
            set(line, name, value.is_string() ? value.get<std::string>() : value.dump());
        }
    }
    return lines;
}

}  // namespace

std::vector<CaseLine> readCasesFile(const std::string& file) {
    std::string text = readInput(file, "list of cases");
    if (text.compare(0, 3, BYTE_ORDER_MARK) == 0) {
        text.erase(0, 3);
    }
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    const bool isJson = start != std::string::npos && (text[start] == '[' || text[start] == '{');
    std::size_t number = 0;
    const std::string list = "the list of cases '" + file + "'";
    try {
        std::vector<CaseLine> lines = isJson ? fromJson(text, number) : fromCsv(text, number);
        if (lines.empty()) {
            throw Failure(ExitStatus::Usage, list + " is empty");
        }
        return lines;
    } catch (const std::invalid_argument& fault) {
        const std::string place = number == 0 ? "" : (isJson ? ", case " : ", line ") + std::to_string(number);
        throw Failure(ExitStatus::Usage, list + place + ": " + fault.what());
    } catch (const nlohmann::json::exception& fault) {
        throw Failure(ExitStatus::Usage, list + " is not JSON: " + faultText(fault));
    }
}

}  // namespace host
