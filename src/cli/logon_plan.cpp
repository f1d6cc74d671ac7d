#include "cli/logon_plan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

#include "text/code_page.h"
#include "text/json.h"

namespace tolvane {

namespace {

using Type = JsonValue::Type;

bool SameLocation(const CliLocation& a, int code, bool wow32) {
    return a.Code == code && a.Wow32 == (wow32 && code == kMachineRun);
}

bool IsFolder(int code) {
    return code == kUserStartup || code == kCommonStartup;
}

std::string Label(const CliLocation& location, const std::string& name) {
    return std::string(CliLocationWord(location.Code, location.Wow32)) + " \"" + name + "\"";
}

std::string StateText(ItemState state, std::optional<float> delay) {
    std::string text = StateWord(state);
    if (state == ItemState::Delayed)
        text += " (" + FormatSingle(delay.value_or(0)) + " s)";
    return text;
}

// A folder item whose program is unknown: its record names the item's own file, in the Startup
// folder or the items folder as its state has it.
bool ProgramUnknown(const ItemRecord& r) {
    return IsFolder(r.Location) && (r.Path == r.OwnName || EndsWith(r.Path, "\\" + r.OwnName));
}

// ---- Reading ----

// Thrown inside the reading of the plan only, caught by ParsePlanJson.
struct PlanFault {
    std::string Error;
    size_t Offset;
};

std::string Quoted(std::string_view key) {
    return "\"" + std::string(key) + "\"";
}

// `what` is the value's key in quotes, or what else names it.
const JsonValue& Typed(const JsonValue& v, Type type, const std::string& what) {
    if (v.Kind != type)
        throw PlanFault{what + " must be " + JsonTypeName(type) + ", not " + JsonTypeName(v.Kind),
                        v.Offset};
    return v;
}

std::string Text(const JsonValue& v, std::string_view key) {
    const std::string& text = Typed(v, Type::String, Quoted(key)).Text;
    if (text.find('\0') != std::string::npos)
        throw PlanFault{Quoted(key) + " cannot hold the character U+0000", v.Offset};
    return text;
}

float Seconds(const JsonValue& v, std::string_view key) {
    const double n = Typed(v, Type::Number, Quoted(key)).Number;
    if (n < 0 || n > std::numeric_limits<float>::max())
        throw PlanFault{Quoted(key) + " must be a number of seconds, 0 or more", v.Offset};
    return static_cast<float>(n);
}

// The object's members, each handed to `take`; a key `take` refuses is a fault.
template <class Take>
void Members(const JsonValue& object, std::string_view what, std::string_view keys, Take take) {
    for (const JsonMember& m : object.Members)
        if (!take(m))
            throw PlanFault{"unknown key " + Quoted(m.Key) + " in " + std::string(what) +
                                " (its keys are " + std::string(keys) + ")",
                            m.KeyOffset};
}

// Line and column of offsets that mostly come in order, without reading the text from its
// start each time.
class Places {
public:
    explicit Places(std::string_view text) : text_(text) {}
    TextPlace Of(size_t offset) {
        if (offset < at_) {
            at_ = 0;
            place_ = {};
        }
        const TextPlace step = PlaceOf(text_.substr(at_), offset - at_);
        place_ = step.Line == 1 ? TextPlace{place_.Line, place_.Column + step.Column - 1}
                                : TextPlace{place_.Line + step.Line - 1, step.Column};
        at_ = offset;
        return place_;
    }

private:
    std::string_view text_;
    size_t at_ = 0;
    TextPlace place_;
};

void ReadSettings(const JsonValue& v, LogonPlan& plan) {
    Members(Typed(v, Type::Object, "\"settings\""), "\"settings\"",
            "mainDelay, idleStart and startupType", [&](const JsonMember& m) {
                const std::string& key = m.Key;
                const JsonValue& value = m.Value;
                if (key == "mainDelay") {
                    plan.MainDelay = Seconds(value, key);
                } else if (key == "idleStart") {
                    plan.IdleStart = Typed(value, Type::Boolean, Quoted(key)).Boolean;
                } else if (key == "startupType") {
                    const double n = Typed(value, Type::Number, Quoted(key)).Number;
                    if (n != std::floor(n) || n < 0 || n > 3)
                        throw PlanFault{"\"startupType\" must be 0, 1, 2 or 3", value.Offset};
                    plan.StartupType = static_cast<int>(n);
                } else {
                    return false;
                }
                return true;
            });
}

PlanItem ReadItem(const JsonValue& v) {
    PlanItem item;
    const JsonValue *location = nullptr, *name = nullptr, *state = nullptr;
    const JsonMember* delay = nullptr;
    Members(Typed(v, Type::Object, "each item"), "an item",
            "location, name, command, state and delay", [&](const JsonMember& m) {
                if (m.Key == "location")
                    location = &m.Value;
                else if (m.Key == "name")
                    name = &m.Value;
                else if (m.Key == "command")
                    item.Command = Text(m.Value, m.Key);
                else if (m.Key == "state")
                    state = &m.Value;
                else if (m.Key == "delay")
                    delay = &m;
                else
                    return false;
                return true;
            });
    for (auto [value, key] : {std::pair{location, "location"}, {name, "name"}, {state, "state"}})
        if (!value)
            throw PlanFault{std::string("this item has no ") + Quoted(key), v.Offset};

    const std::optional<CliLocation> place = ParseCliLocation(Text(*location, "location"));
    if (!place)
        throw PlanFault{"unknown location " + Quoted(location->Text) +
                            " (one of user-folder, user-run, common-folder, machine-run and "
                            "machine-run-32)",
                        location->Offset};
    item.Location = *place;
    item.Name = Text(*name, "name");
    if (item.Name.empty())
        throw PlanFault{"an item's \"name\" cannot be empty", name->Offset};
    const std::string stateWord = Text(*state, "state");
    const ItemState states[] = {ItemState::Active, ItemState::Delayed, ItemState::Stopped};
    const auto known = std::find_if(std::begin(states), std::end(states),
                                    [&](ItemState s) { return stateWord == StateWord(s); });
    if (known == std::end(states))
        throw PlanFault{"unknown state " + Quoted(stateWord) +
                            " (one of active, delayed and stopped)",
                        state->Offset};
    item.State = *known;
    if (delay && item.State != ItemState::Delayed)
        throw PlanFault{"\"delay\" is only for a delayed item; this one is " + stateWord,
                        delay->KeyOffset};
    if (item.State == ItemState::Delayed)
        item.Delay = delay ? Seconds(delay->Value, "delay") : 0.0f;
    return item;
}

std::vector<PlanItem> ReadItems(const JsonValue& list, Places& places, NameOrder order) {
    // Each item's location and name, in an order that takes names as `order` does, with the
    // line it is on: a long plan is checked for an item given twice without comparing every
    // pair.
    auto before = [order](const PlanItem& a, const PlanItem& b) {
        if (a.Location.Code != b.Location.Code || a.Location.Wow32 != b.Location.Wow32)
            return std::pair(a.Location.Code, a.Location.Wow32) <
                   std::pair(b.Location.Code, b.Location.Wow32);
        return order ? order(a.Name, b.Name) < 0 : a.Name < b.Name;
    };
    std::set<PlanItem, decltype(before)> seen(before);
    std::vector<PlanItem> items;
    for (const JsonValue& v : list.Items) {
        PlanItem item = ReadItem(v);
        const TextPlace at = places.Of(v.Offset);
        item.Line = at.Line;
        item.Column = at.Column;
        const auto [earlier, first] = seen.insert(item);
        if (!first)
            throw PlanFault{Label(item.Location, item.Name) +
                                " is in the plan twice (also on line " +
                                std::to_string(earlier->Line) + ")",
                            v.Offset};
        items.push_back(std::move(item));
    }
    return items;
}

LogonPlan ReadPlan(const JsonValue& document, Places& places, NameOrder order) {
    if (document.Kind != Type::Object)
        throw PlanFault{std::string("a plan is an object in { }, not ") +
                            JsonTypeName(document.Kind),
                        document.Offset};
    // The version first: a newer plan may hold keys this one does not know.
    const auto version = std::find_if(document.Members.begin(), document.Members.end(),
                                      [](const JsonMember& m) { return m.Key == "tolvanePlan"; });
    if (version == document.Members.end())
        throw PlanFault{"this is no Tolvane plan: it has no \"tolvanePlan\"", document.Offset};
    const double n = Typed(version->Value, Type::Number, "\"tolvanePlan\"").Number;
    if (n > kPlanVersion && n == std::floor(n))
        throw PlanFault{"this plan was written by a newer Tolvane (plan version " +
                            FormatSingle(static_cast<float>(n)) +
                            "); this Tolvane reads plan version " + std::to_string(kPlanVersion),
                        version->Value.Offset};
    if (n != kPlanVersion)
        throw PlanFault{"\"tolvanePlan\" must be " + std::to_string(kPlanVersion),
                        version->Value.Offset};

    LogonPlan plan;
    Members(document, "the plan", "tolvanePlan, settings and items", [&](const JsonMember& m) {
        const std::string& key = m.Key;
        const JsonValue& value = m.Value;
        if (key == "settings") {
            ReadSettings(value, plan);
        } else if (key == "items") {
            plan.Items = ReadItems(Typed(value, Type::Array, Quoted(key)), places, order);
        } else {
            return key == "tolvanePlan";
        }
        return true;
    });
    return plan;
}

// ---- Writing ----

// An object of the given members, each "key": value on a line of its own.
std::string JsonObject(const std::vector<std::pair<const char*, std::string>>& members,
                       const std::string& indent) {
    if (members.empty())
        return "{}";
    std::string out = "{\n";
    for (size_t i = 0; i < members.size(); ++i)
        out += indent + "  \"" + members[i].first + "\": " + members[i].second +
               (i + 1 < members.size() ? ",\n" : "\n");
    return out + indent + "}";
}

} // namespace

std::string FormatPlanJson(const LogonPlan& plan) {
    std::vector<std::pair<const char*, std::string>> settings;
    if (plan.MainDelay)
        settings.push_back({"mainDelay", FormatSingle(*plan.MainDelay)});
    if (plan.IdleStart)
        settings.push_back({"idleStart", *plan.IdleStart ? "true" : "false"});
    if (plan.StartupType)
        settings.push_back({"startupType", std::to_string(*plan.StartupType)});
    std::string items = "[";
    for (size_t i = 0; i < plan.Items.size(); ++i) {
        const PlanItem& item = plan.Items[i];
        std::vector<std::pair<const char*, std::string>> members = {
            {"location", JsonText(CliLocationWord(item.Location.Code, item.Location.Wow32))},
            {"name", JsonText(item.Name)},
            {"command", JsonText(item.Command)},
            {"state", JsonText(StateWord(item.State))}};
        if (item.State == ItemState::Delayed)
            members.push_back({"delay", FormatSingle(item.Delay.value_or(0))});
        items += (i ? ",\n    " : "\n    ") + JsonObject(members, "    ");
    }
    items += plan.Items.empty() ? "]" : "\n  ]";
    return JsonObject({{"tolvanePlan", std::to_string(kPlanVersion)},
                       {"settings", JsonObject(settings, "  ")},
                       {"items", items}},
                      "") +
           "\n";
}

PlanParse ParsePlanJson(std::string_view bytes, NameOrder order) {
    // Positions count from after the mark, which no editor shows.
    const std::string_view text = WithoutUtf8Mark(bytes);
    Places places(text);
    auto fault = [&](std::string error, size_t offset) {
        const TextPlace at = places.Of(offset);
        return PlanParse{std::nullopt, std::move(error), at.Line, at.Column};
    };
    const JsonRead read = ReadJson(text);
    if (!read.Value)
        return fault(read.Error, read.Offset);
    try {
        return {ReadPlan(*read.Value, places, order), "", 0, 0};
    } catch (const PlanFault& f) {
        return fault(f.Error, f.Offset);
    }
}

std::string CommandText(const std::string& path, const std::string& parameters) {
    std::string text = Contains(path, " ") ? "\"" + path + "\"" : path;
    if (!parameters.empty())
        text += " " + parameters;
    return text;
}

std::string
WithProfileVariables(std::string_view text,
                     const std::vector<std::pair<std::string, std::string>>& variables) {
    struct Folder {
        std::string Lower, Name;
    };
    std::vector<Folder> folders;
    for (const auto& [name, value] : variables) {
        std::string folder = ToLower(value);
        while (EndsWith(folder, "\\"))
            folder.pop_back();
        // A drive alone ("C:") is in every path of the drive and names no folder of the profile.
        if (!name.empty() && Contains(folder, "\\"))
            folders.push_back({folder, name});
    }
    std::stable_sort(folders.begin(), folders.end(), [](const Folder& a, const Folder& b) {
        return a.Lower.size() > b.Lower.size();
    });
    const std::string lower = ToLower(text);
    std::string out;
    for (size_t i = 0; i < text.size();) {
        const auto found = std::find_if(folders.begin(), folders.end(), [&](const Folder& f) {
            const size_t end = i + f.Lower.size();
            return lower.compare(i, f.Lower.size(), f.Lower) == 0 &&
                   (end == text.size() || text[end] == '\\' || text[end] == '"' ||
                    text[end] == ' ');
        });
        if (found == folders.end()) {
            out += text[i++];
        } else {
            out += "%" + found->Name + "%";
            i += found->Lower.size();
        }
    }
    return out;
}

LogonPlan PlanFromRecords(const std::vector<ItemRecord>& records, const ProgramModel& model,
                          const std::vector<std::pair<std::string, std::string>>& profileVariables,
                          NameOrder order) {
    LogonPlan plan;
    plan.MainDelay = model.MainStartupDelay;
    plan.IdleStart = model.WaitForIdle != 0;
    plan.StartupType = model.StartupType;
    for (const ItemRecord& r : records) {
        if (r.State == ItemState::Active || !r.Movable)
            continue;
        const bool twice =
            std::any_of(plan.Items.begin(), plan.Items.end(), [&](const PlanItem& p) {
                return SameLocation(p.Location, r.Location, r.Wow32) &&
                       SameName(p.Name, r.OwnName, order);
            });
        if (twice)
            continue;
        PlanItem item;
        item.Location = {r.Location, r.Wow32 && r.Location == kMachineRun};
        item.Name = r.OwnName;
        if (!ProgramUnknown(r))
            item.Command =
                WithProfileVariables(CommandText(r.Path, r.Parameters), profileVariables);
        item.State = r.State;
        if (r.State == ItemState::Delayed)
            item.Delay = r.Delay.value_or(0);
        plan.Items.push_back(std::move(item));
    }
    return plan;
}

std::vector<PlanDifference> ComparePlan(const LogonPlan& plan,
                                        const std::vector<ItemRecord>& records,
                                        const ProgramModel& current,
                                        const CommandLineSystem& machine, NameOrder order) {
    std::vector<PlanDifference> differences;
    auto setting = [&](const char* name, const std::string& now, const std::string& planned) {
        if (now != planned) {
            PlanDifference d;
            d.Change = true;
            d.Setting = name;
            d.Text = "settings: " + d.Setting + " " + now + " -> " + planned;
            differences.push_back(std::move(d));
        }
    };
    auto yesNo = [](bool b) { return std::string(b ? "true" : "false"); };
    if (plan.MainDelay)
        setting("mainDelay", FormatSingle(current.MainStartupDelay), FormatSingle(*plan.MainDelay));
    if (plan.IdleStart)
        setting("idleStart", yesNo(current.WaitForIdle != 0), yesNo(*plan.IdleStart));
    if (plan.StartupType)
        setting("startupType", std::to_string(current.StartupType),
                std::to_string(*plan.StartupType));

    auto sameProgram = [&](const std::string& a, const std::string& b) {
        return order ? order(a, b) == 0 : ToLower(a) == ToLower(b);
    };
    auto commandMatches = [&](const PlanItem& p, const ItemRecord& r) {
        if (p.Command.empty() || ProgramUnknown(r))
            return true;
        const RunCommandParts planned = SplitRunData(p.Command, true, machine);
        return sameProgram(machine.Expand(planned.Path), machine.Expand(r.Path)) &&
               (IsFolder(r.Location) ||
                Trim(machine.Expand(planned.Parameters)) == Trim(machine.Expand(r.Parameters)));
    };

    for (size_t k = 0; k < plan.Items.size(); ++k) {
        const PlanItem& p = plan.Items[k];
        PlanDifference d;
        d.Item = static_cast<int>(k);
        d.To = p.State;
        d.Delay = p.Delay;
        const std::string label = Label(p.Location, p.Name);
        int named = -1, match = -1;
        for (size_t i = 0; i < records.size(); ++i) {
            const ItemRecord& r = records[i];
            if (!SameLocation(p.Location, r.Location, r.Wow32) ||
                !SameName(r.OwnName, p.Name, order))
                continue;
            if (named < 0)
                named = static_cast<int>(i);
            if (commandMatches(p, r) &&
                (match < 0 || (records[match].State != p.State && r.State == p.State)))
                match = static_cast<int>(i);
        }
        if (named < 0) {
            d.What = PlanDifference::Kind::NotHere;
            d.Text = label + ": not on this machine";
        } else if (match < 0) {
            const ItemRecord& r = records[named];
            d.What = PlanDifference::Kind::CommandDiffers;
            d.Record = named;
            d.From = r.State;
            d.Text = label + ": the command here differs (\"" + CommandText(r.Path, r.Parameters) +
                     "\" against \"" + p.Command + "\"); left alone";
        } else {
            const ItemRecord& r = records[match];
            d.Record = match;
            d.From = r.State;
            std::string change;
            if (r.State != p.State) {
                d.What = PlanDifference::Kind::State;
                change = std::string(StateWord(r.State)) + " -> " + StateText(p.State, p.Delay);
            } else if (p.State == ItemState::Delayed && r.Delay.value_or(0) != *p.Delay) {
                d.What = PlanDifference::Kind::Delay;
                change = "delay " + FormatSingle(r.Delay.value_or(0)) + " s -> " +
                         FormatSingle(*p.Delay) + " s";
            } else {
                continue;
            }
            d.Change = r.Movable;
            if (!r.Movable)
                d.What = PlanDifference::Kind::NotMovable;
            d.Text = label + ": " + change +
                     (r.Movable ? "" : " is not a move the list offers for this item; left alone");
        }
        differences.push_back(std::move(d));
    }
    return differences;
}

} // namespace tolvane
