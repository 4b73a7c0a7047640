#include "host/shared/ScenarioFile.h"

#include "host/shared/StrictJson.h"

#include <charconv>
#include <limits>
#include <utility>

namespace merro::host {

using platform::CalendarFields;
using namespace platform::ffmpeg;

namespace {

constexpr std::int64_t kMostFrames = 30LL * 60 * 60 * 24; ///< a day of tape
constexpr std::int64_t kMostBytes = 1LL << 30;

/// Reads numbers with the characters of `form` between them: "dddd-dd-ddTdd:dd:dd", d being a digit.
bool parseForm(std::string_view text, std::string_view form, std::initializer_list<int*> numbers) {
    if (text.size() != form.size())
        return false;
    auto number = numbers.begin();
    for (std::size_t at = 0; at < form.size();) {
        if (form[at] != 'd') {
            if (text[at] != form[at])
                return false;
            ++at;
            continue;
        }
        const std::size_t end = std::min(form.find_first_not_of('d', at), form.size());
        const auto read = std::from_chars(text.data() + at, text.data() + end, **number);
        if (read.ec != std::errc() || read.ptr != text.data() + end || text[at] == '-')
            return false;
        ++number;
        at = end;
    }
    return true;
}

TapeSystem readSystem(const StrictJson& json) {
    return json.choice({"525/60", "625/50"}) == 0 ? TapeSystem::System525_60 : TapeSystem::System625_50;
}

CalendarFields readDate(const StrictJson& json) {
    CalendarFields date;
    if (!parseWallClock(json.text(), date))
        json.fail("a date as in \"2005-03-17T14:03:22\" is wanted here");
    return date;
}

TakeSound readSound(const StrictJson& json) {
    TakeSound sound;
    const std::vector<std::string> kinds{"silence", "tone", "beep"};
    if (json.isText()) {
        sound.kind = static_cast<TakeSoundKind>(json.choice(kinds));
        return sound;
    }
    json.requireKeys({"kind", "frequency"});
    sound.kind = static_cast<TakeSoundKind>(json.at("kind").choice(kinds));
    if (json.has("frequency"))
        sound.frequencyInHertz = json.at("frequency").number(1, 20000);
    return sound;
}

TakeFault readFault(const StrictJson& json) {
    json.requireKeys({"kind", "frames", "sequences", "date"});
    TakeFault fault;
    fault.kind = static_cast<TakeFaultKind>(
        json.at("kind").choice({"damagedSequences", "concealedBlocks", "noTimecode", "noDate", "wrongDate",
                                "lostSound", "noSound"}));
    const std::vector<StrictJson> frames = json.at("frames").elements();
    if (frames.size() != 2)
        json.at("frames").fail("two numbers are wanted here, the first and the last frame");
    fault.firstFrame = frames[0].integer(0, kMostFrames);
    fault.lastFrame = frames[1].integer(fault.firstFrame, kMostFrames);
    if (json.has("sequences"))
        for (const StrictJson& sequence : json.at("sequences").elements())
            fault.sequences.push_back(static_cast<int>(sequence.integer(0, 11)));
    if (fault.kind == TakeFaultKind::WrongDate)
        fault.date = readDate(json.at("date"));
    else if (json.has("date"))
        json.at("date").fail("only a fault of kind \"wrongDate\" has a date");
    return fault;
}

void readLength(const StrictJson& json, Take& take) {
    if (json.has("frames") == json.has("seconds"))
        json.fail("either \"seconds\" or \"frames\" is wanted");
    if (json.has("frames"))
        take.frames = json.at("frames").integer(1, kMostFrames);
    else
        take.seconds = json.at("seconds").number(0.04, 24 * 60 * 60);
}

void readDateCourse(const StrictJson& json, Take& take) {
    const bool standsStill = json.has("dateStandsStill") && json.at("dateStandsStill").boolean();
    take.dateCourse = standsStill ? DateCourse::StandsStill : DateCourse::Runs;
    if (!json.has("recordingDate"))
        return;
    const StrictJson date = json.at("recordingDate");
    if (date.isText() && date.text() == "none")
        take.dateCourse = DateCourse::None;
    else
        take.recordingDate = readDate(date);
}

void readTimecodeCourse(const StrictJson& json, Take& take) {
    if (json.has("dropFrame"))
        take.dropFrame = json.at("dropFrame").boolean();
    if (!json.has("timecode"))
        return;
    const StrictJson timecode = json.at("timecode");
    if (timecode.isText() && timecode.text() == "none") {
        take.timecodeCourse = TimecodeCourse::None;
        return;
    }
    take.timecodeCourse = TimecodeCourse::StartsAt;
    if (!parseTimecode(timecode.text(), take.timecode))
        timecode.fail("a timecode as in \"01:02:03:04\", or \"none\", is wanted here");
}

Take readTake(const StrictJson& json) {
    json.requireKeys({"seconds", "frames", "picture", "label", "sound", "aspect", "recordingDate",
                      "dateStandsStill", "timecode", "dropFrame", "repeatPicturesAfter", "faults",
                      "junkBytesAfter", "system"});
    Take take;
    readLength(json, take);
    if (json.has("picture"))
        take.picture = json.at("picture").text();
    if (json.has("label"))
        take.label = json.at("label").text();
    if (json.has("sound"))
        take.sound = readSound(json.at("sound"));
    if (json.has("aspect"))
        take.aspect =
            json.at("aspect").choice({"4:3", "16:9"}) == 0 ? TapeAspect::Aspect4By3 : TapeAspect::Aspect16By9;
    readDateCourse(json, take);
    readTimecodeCourse(json, take);
    if (json.has("repeatPicturesAfter"))
        take.repeatPicturesAfterInFrame = json.at("repeatPicturesAfter").integer(0, kMostFrames);
    if (json.has("faults"))
        for (const StrictJson& fault : json.at("faults").elements())
            take.faults.push_back(readFault(fault));
    if (json.has("junkBytesAfter"))
        take.junkBytesAfter = json.at("junkBytesAfter").integer(0, kMostBytes);
    if (json.has("system"))
        take.system = readSystem(json.at("system"));
    return take;
}

} // namespace

bool parseWallClock(const std::string& text, CalendarFields& fields) {
    return parseForm(
        text, "dddd-dd-ddTdd:dd:dd",
        {&fields.year, &fields.month, &fields.day, &fields.hours, &fields.minutes, &fields.seconds});
}

bool parseTimecode(const std::string& text, TakeTimecode& timecode) {
    const std::initializer_list<int*> numbers{&timecode.hours, &timecode.minutes, &timecode.seconds,
                                              &timecode.frames};
    return parseForm(text, "dd:dd:dd:dd", numbers) || parseForm(text, "dd:dd:dd;dd", numbers);
}

TapeScenario readScenarioFile(const std::string& path) {
    const nlohmann::json document = readJsonFile(path);
    const StrictJson json(document, path);
    json.requireKeys({"system", "tailBytes", "takes"});
    TapeScenario scenario;
    if (json.has("system"))
        scenario.system = readSystem(json.at("system"));
    if (json.has("tailBytes"))
        scenario.tailBytes = json.at("tailBytes").integer(0, 143999);
    for (const StrictJson& take : json.at("takes").elements())
        scenario.takes.push_back(readTake(take));
    if (scenario.takes.empty())
        json.at("takes").fail("at least one take is wanted");
    return scenario;
}

} // namespace merro::host
