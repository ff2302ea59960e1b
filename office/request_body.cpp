#include "office/request_body.h"

#include <algorithm>

#include <boost/json.hpp>

namespace zelkovanta::office {
namespace json = boost::json;

struct RequestBody::Document {
    json::object object;
};

namespace {

std::string quoted(std::string_view name) {
    return "\"" + std::string(name) + "\"";
}

}  // namespace

std::size_t scalarCount(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
}

RequestBody::RequestBody() = default;
RequestBody::~RequestBody() = default;
RequestBody::RequestBody(RequestBody&&) noexcept = default;

RequestBody::RequestBody(std::string_view text) {
    boost::system::error_code error;
    json::value value = json::parse(json::string_view(text.data(), text.size()), error);
    if (error || !value.is_object()) {
        document_ = std::make_shared<Document>();
        fail("The body must be a JSON object.");
        return;
    }
    document_ = std::make_shared<Document>(Document{std::move(value.get_object())});
}

void RequestBody::fail(std::string message) {
    if (!fault_) {
        fault_ = refusals::badRequest(std::move(message));
    }
}

void RequestBody::adoptFault(const RequestBody& inner) {
    if (!fault_) {
        fault_ = inner.fault_;
    }
}

std::optional<std::string> RequestBody::text(std::string_view name, std::size_t longest) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found == nullptr || found->is_null()) {
        return std::nullopt;
    }
    if (!found->is_string()) {
        fail(quoted(name) + " must be a text.");
        return std::nullopt;
    }
    std::string text(found->get_string().data(), found->get_string().size());
    if (scalarCount(text) > longest) {
        fail(quoted(name) + " is longer than " + std::to_string(longest) + " characters.");
        return std::nullopt;
    }
    return text;
}

std::string RequestBody::requiredText(std::string_view name, std::size_t longest) {
    std::optional<std::string> found = text(name, longest);
    if (!found) {
        fail(quoted(name) + " is missing.");
    }
    return std::move(found).value_or(std::string());
}

std::optional<std::vector<std::string>> RequestBody::texts(std::string_view name, std::size_t most) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found == nullptr || found->is_null()) {
        return std::nullopt;
    }
    const json::array* array = found->if_array();
    if (array == nullptr || array->size() > most || !std::ranges::all_of(*array, &json::value::is_string)) {
        fail(quoted(name) + " must be a list of at most " + std::to_string(most) + " texts.");
        return std::nullopt;
    }
    std::vector<std::string> texts;
    for (const json::value& element : *array) {
        texts.emplace_back(element.get_string().data(), element.get_string().size());
    }
    return texts;
}

std::optional<bool> RequestBody::truth(std::string_view name) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found == nullptr || found->is_null()) {
        return std::nullopt;
    }
    if (!found->is_bool()) {
        fail(quoted(name) + " must be true or false.");
        return std::nullopt;
    }
    return found->get_bool();
}

std::optional<std::int64_t> RequestBody::integer(std::string_view name, std::int64_t lowest, std::int64_t highest) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found == nullptr || found->is_null()) {
        return std::nullopt;
    }
    const std::int64_t* number = found->if_int64();
    if (number == nullptr || *number < lowest || *number > highest) {
        fail(quoted(name) + " must be a whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest) + ".");
        return std::nullopt;
    }
    return *number;
}

RequestBody RequestBody::requiredObject(std::string_view name) {
    RequestBody inner;
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found != nullptr && found->is_object()) {
        inner.document_ = std::make_shared<Document>(Document{found->get_object()});
    } else {
        inner.document_ = std::make_shared<Document>();
        fail(quoted(name) + " must be an object.");
        inner.fault_ = fault_;
    }
    return inner;
}

std::vector<std::string> RequestBody::requiredObjects(std::string_view name, std::size_t most) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    const json::array* array = found == nullptr ? nullptr : found->if_array();
    std::vector<std::string> texts;
    if (array == nullptr || array->size() > most || !std::ranges::all_of(*array, &json::value::is_object)) {
        fail(quoted(name) + " must be a list of at most " + std::to_string(most) + " objects.");
        return texts;
    }
    for (const json::value& element : *array) {
        texts.push_back(json::serialize(element));
    }
    return texts;
}

std::optional<std::string> RequestBody::objectText(std::string_view name) {
    const json::value* found = fault_ ? nullptr : document_->object.if_contains(json::string_view(name));
    if (found == nullptr || found->is_null()) {
        return std::nullopt;
    }
    if (!found->is_object()) {
        fail(quoted(name) + " must be an object.");
        return std::nullopt;
    }
    return json::serialize(*found);
}

}  // namespace zelkovanta::office
