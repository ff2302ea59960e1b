#include "office/notification_settings.h"

#include <algorithm>
#include <initializer_list>

#include <boost/json.hpp>

namespace zelkovanta::office {
namespace {

namespace json = boost::json;

enum class Form { truth, text, number };

struct Field {
    std::string_view name;
    Form form;
};

bool has(const json::value& value, Form form) {
    switch (form) {
        case Form::truth:
            return value.is_bool();
        case Form::text:
            return value.is_string();
        case Form::number:
            return value.is_int64();
    }
    return false;
}

bool isObjectOf(const json::value& value, std::initializer_list<Field> fields) {
    const json::object* object = value.if_object();
    return object != nullptr && std::ranges::all_of(fields, [object](const Field& field) {
               const json::value* found = object->if_contains(json::string_view(field.name));
               return found == nullptr || found->is_null() || has(*found, field.form);
           });
}

bool isAbsent(const json::value* value) {
    return value == nullptr || value->is_null();
}

}  // namespace

std::optional<Refusal> faultOfNotificationSettings(std::string_view text) {
    boost::system::error_code error;
    const json::value value = json::parse(json::string_view(text.data(), text.size()), error);
    bool good = !error && isObjectOf(value, {{"enabled", Form::truth},
                                             {"sound", Form::text},
                                             {"tone", Form::text},
                                             {"showNote", Form::truth},
                                             {"repeatAfterMinutes", Form::number},
                                             {"quiet", Form::truth}});
    if (good) {
        const json::value* escalation = value.get_object().if_contains("escalation");
        good = isAbsent(escalation) ||
               isObjectOf(*escalation,
                          {{"enabled", Form::truth}, {"afterMinutes", Form::number}, {"notifyMemberId", Form::text}});
    }
    if (good) {
        const json::value* perType = value.get_object().if_contains("perType");
        good = isAbsent(perType) ||
               (perType->is_object() && std::ranges::all_of(perType->get_object(), [](const auto& entry) {
                    return isObjectOf(entry.value(),
                                      {{"enabled", Form::truth}, {"sound", Form::text}, {"tone", Form::text}});
                }));
    }
    return good ? std::nullopt : std::optional(refusals::badRequest("These are no notification settings."));
}

}  // namespace zelkovanta::office
