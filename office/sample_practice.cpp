#include "office/desk.h"
#include "office/json_text.h"

#include <initializer_list>

namespace zelkovanta::office {
namespace {

struct SampleMember {
    const char* name;
    const char* department;
    const char* color;
    bool onShift = true;
    bool admin = false;
};

struct SampleType {
    const char* key;
    const char* label;
    const char* color;
    std::int64_t priority;
    std::vector<std::string> senders;
    const char* target = nullptr;
};

struct SamplePractice {
    const char* name;
    const char* slug;
    const char* vertical;
    std::vector<Department> departments;
    std::vector<const char*> rooms;
    std::vector<SampleMember> members;
    std::vector<SampleType> types;
};

std::vector<SampleType> builtInTypes() {
    return {{"ready", "Ready for doctor", "#2E9E6B", 20, {}},
            {"patient_seated", "Patient seated", "#3A7BD5", 10, {}},
            {"step_out", "Step out please", "#E0A030", 30, {}},
            {"urgent", "Urgent", "#D64545", 100, {}}};
}

std::vector<SamplePractice> harbour() {
    std::vector<SampleType> types = builtInTypes();
    types.push_back({"xray", "X-ray needed", "#7A5BC7", 15, {"provider", "hygienist"}, "assistant"});
    types.push_back(
        {"checkout", "Ready to check out", "#5B8C9E", 5, {"provider", "hygienist", "assistant"}, "frontdesk"});
    return {
        {"Harbour Dental",
         "harbour",
         "dental",
         {{"provider", "Dentist", "Dentists"},
          {"hygienist", "Hygienist", "Hygienists"},
          {"assistant", "Dental assistant", "Dental assistants"},
          {"frontdesk", "Front desk", "Front desk"},
          {"nurse", "Nurse", "Nurses"},
          {"sterilisation", "Sterilisation", "Sterilisation"}},
         {"Room 1", "Room 2", "Room 3", "Room 4", "Imaging", "Consult"},
         {{"Dr. Amara Okafor", "provider", "#3A7BD5", true, true},
          {"Dr. Jonas Lindqvist", "provider", "#2E9E6B"},
          {"Dr. Mei Tanaka", "provider", "#B0578D"},
          {"Dr. Paul Brandt", "provider", "#7A5BC7", false},
          {"Sofia Marino", "hygienist", "#E0A030"},
          {"Caleb Wright", "hygienist", "#C7683A"},
          {"Priya Raman", "assistant", "#5B8C9E"},
          {"Tomás Herrera", "assistant", "#8A9A3B"},
          {"Lena Vogel", "assistant", "#9C6644"},
          {"Grace Mbeki", "nurse", "#4F9D9D"},
          {"Hannah Cole", "frontdesk", "#6C7A89", true, true},
          {"Idris Bello", "frontdesk", "#A26769"},
          {"Noor Haddad", "sterilisation", "#557A95"}},
         std::move(types)},
        {"Lakeside Family Practice",
         "lakeside",
         "medical",
         {{"provider", "Physician", "Physicians"},
          {"nurse", "Nurse", "Nurses"},
          {"frontdesk", "Front desk", "Front desk"}},
         {"Exam A", "Exam B", "Room 3"},
         {{"Dr. Ruth Adeyemi", "provider", "#3A7BD5", true, true},
          {"Dr. Simon Keller", "provider", "#2E9E6B"},
          {"Mina Park", "nurse", "#E0A030"},
          {"Olga Petrova", "frontdesk", "#6C7A89"}},
         builtInTypes()},
    };
}

}  // namespace

Office::Desk::Outcome Office::Desk::addSample(std::string_view name, Timestamp now) {
    if (name != "harbour") {
        return std::unexpected(refusals::notFound(
            "unknown_sample", "There is no sample practice \"" + std::string(name) + "\"; there is harbour."));
    }
    if (!state().all<Practice>().empty()) {
        return R"({"added":0})";
    }
    std::int64_t added = 0;
    for (const SamplePractice& sample : harbour()) {
        Practice practice;
        practice.id = unusedIdentifier<Practice>("office_");
        practice.position = added++;
        practice.name = sample.name;
        practice.slug = sample.slug;
        practice.vertical = sample.vertical;
        practice.departments = sample.departments;
        practice.autoExpireMinutes = 45;
        practice.allowAnyProvider = true;
        practice.requireSignedInSender = false;
        practice.beaconAutoClearAction = "done";
        practice.beaconRssiThreshold = -65;
        practice.beaconDwellSeconds = 8;
        std::int64_t position = 0;
        for (const char* room : sample.rooms) {
            ledger_.put(Room{.id = unusedIdentifier<Room>("room_"),
                             .practiceId = practice.id,
                             .position = position++,
                             .name = room,
                             .beaconUuid = std::nullopt,
                             .active = true});
        }
        position = 0;
        for (const SampleMember& each : sample.members) {
            Member member;
            member.id = unusedIdentifier<Member>("mem_");
            member.practiceId = practice.id;
            member.position = position++;
            member.name = each.name;
            member.department = each.department;
            member.color = each.color;
            member.status = "available";
            member.active = true;
            member.onShift = each.onShift;
            member.registeredAt = now;
            member.isAdmin = each.admin;
            ledger_.put(std::move(member));
        }
        position = 0;
        for (const SampleType& each : sample.types) {
            SignalType type;
            type.id = unusedIdentifier<SignalType>("type_");
            type.practiceId = practice.id;
            type.position = position;
            type.key = each.key;
            type.label = each.label;
            type.color = each.color;
            type.priority = each.priority;
            type.sortOrder = position++;
            if (!each.senders.empty()) {
                type.senderDepartments = each.senders;
            }
            if (each.target != nullptr) {
                type.targetDepartment = each.target;
            }
            type.active = true;
            ledger_.put(std::move(type));
        }
        ledger_.put(std::move(practice));
    }
    JsonText json;
    json.object().field("added", added).endObject();
    return json.take();
}

}  // namespace zelkovanta::office
