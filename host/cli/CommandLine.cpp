#include "host/cli/CommandLine.h"

#include "host/cli/Arguments.h"
#include "host/cli/Commands.h"
#include "host/cli/OptionTypes.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <functional>
#include <string>

namespace merro::host {

namespace {

/// What is to be done once the command line has been read.
using Chosen = std::function<ExitStatus()>;

constexpr const char* kOverview = R"(Examples:
  merro tape make demo.json demo.dv        make a tape to try things on
  merro log demo.dv --into demo            cut it into clips: movies, sample frames, posters, reports
  merro inspect demo.dv --frames 0-9 --json
  merro export demo --format csv --output clips.csv

Exit status: 0 done, 1 failed, 2 usage, 3 the source is not DV, 130 interrupted.
"merro COMMAND --help" teaches each command.)";

constexpr const char* kLogExamples = R"(Examples:
  merro log tape.dv --into holidays
      a clip for each take: 0001.mov, 0001.thumbnails, 0001.png, 0002.mov, ...; clips.json and catalogue.sqlite
  merro log tape.avi --into holidays --movies off --sample-every 5
      reports, posters and one frame in five seconds; clips are numbered on from those already there
  merro log tape.dv --into holidays --scenes off --end-of-tape 4
      one clip for the whole tape
  merro log tape.dv --into holidays --events --progress never > events.jsonl
      every message as a line of JSON, for programs

Ctrl-C acts as the stop button: the last clip is closed and reported (exit status 130). A second one gives up.
Settings that are not given are the stored ones (merro preset, --defaults-file).)";

constexpr const char* kInspectExamples = R"(Examples:
  merro inspect tape.dv --frames 0-24
  merro inspect tape.dv --json | jq -r 'select(.recordingDate == null) | .frame'

Each line of --json: {"frame", "offset", "size", "system", "timecode", "timecodeType", "recordingDate",
"recordingTime", "aspectRatio", "stillPicture", "interlaced", "pixelSampling", "sequence"}. Aspect ratio 0 is
16:9, 1 is 4:3; sequence is the DIF sequence that the values from recordingDate on were found in.)";

constexpr const char* kExportExamples = R"(Examples:
  merro export holidays --format json
  merro export holidays --format csv --output holidays.csv)";

constexpr const char* kPresetExamples = R"(Examples:
  merro preset save long-takes --sample-every 20 --drop-frames 5
  merro preset list
  merro preset show long-takes
  merro log tape.dv --into holidays --preset long-takes
  merro preset delete long-takes)";

constexpr const char* kDevicesExamples = R"(Examples:
  merro devices
  merro devices --json)";

constexpr const char* kTapeExamples = R"(Examples:
  merro tape make demo.json demo.dv

A scenario: {"system": "625/50", "takes": [
  {"seconds": 4, "picture": "bars", "label": "Garden", "recordingDate": "2005-03-17T14:03:22",
   "timecode": "00:00:00:00"},
  {"seconds": 3, "picture": "testsrc2", "sound": "silence", "aspect": "16:9",
   "recordingDate": "2005-03-17T15:20:00",
   "faults": [{"kind": "noTimecode", "frames": [10, 20]}]}]}
Also in a take: "frames", "dateStandsStill", "dropFrame", "repeatPicturesAfter", "junkBytesAfter", "system";
"none" for a date or timecode that is missing. Kinds of faults: damagedSequences, concealedBlocks, noTimecode,
noDate, wrongDate, lostSound, noSound. "tailBytes" beside "takes" cuts one more frame short.)";

void addStore(CLI::App& command, StoreArguments& store) {
    command
        .add_option("--defaults-file", store.defaultsFile,
                    "Keep settings in FILE, and presets beside it, instead of in the user's own folder")
        ->type_name("FILE");
}

void addSettings(CLI::App& command, SettingOptions& options) {
    addSwitch(command, "--scenes", "Cut a clip where the recording date jumps", options.scenes);
    command
        .add_option("--drop-frames", options.dropFrames,
                    "Frames skipped after a cut, 0 up to one less than a second")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber.description(""));
    addNumberOrOff(command, "--sample-every", {1, 2, 5, 10, 20}, "Seconds between sample frames",
                   options.sampleEverySeconds, 0);
    addSwitch(command, "--movies", "Write a movie for each clip", options.movies);
    addNumberOrOff(command, "--end-of-tape", {}, "Stop when no frame has come for so many seconds",
                   options.endOfTapeSeconds, -1);
    addChoice<AfterRecord>(
        command, "--after", "What the deck does after recording",
        {{"pause", AfterRecord::Pause}, {"stop", AfterRecord::Stop}, {"nothing", AfterRecord::Nothing}},
        [&options](AfterRecord after) { options.after = after; });
}

void addProgress(CLI::App& command, ShowProgress& progress) {
    addChoice<ShowProgress>(
        command, "--progress", "Show a bar on standard error (auto: when it is a terminal)",
        {{"auto", ShowProgress::Auto}, {"always", ShowProgress::Always}, {"never", ShowProgress::Never}},
        [&progress](ShowProgress chosen) { progress = chosen; });
}

void addLog(CLI::App& program, LogArguments& arguments, Chosen& chosen) {
    CLI::App& log = *program.add_subcommand("log", "Log a tape: cut it into clips and report them");
    log.add_option("source", arguments.source, "A DV file: raw DV, AVI, QuickTime or Matroska")
        ->required()
        ->type_name("SOURCE");
    log.add_option("--into", arguments.folder, "Where the clips go; made when it is not there")
        ->required()
        ->type_name("FOLDER");
    addSettings(log, arguments.options);
    addSwitch(log, "--posters", "Make a small picture of each clip's first frame", arguments.posters);
    log.add_option("--preset", arguments.preset, "Start from a stored preset; options given here win over it")
        ->type_name("NAME");
    log.add_flag("--realtime", arguments.realtime, "Play the tape at its own speed, as a camcorder would");
    log.add_option(
           "--time-zone", arguments.timeZone,
           "Time zone of the camera's clock: none (no daylight saving), system, or as in Europe/Berlin")
        ->type_name("ZONE")
        ->capture_default_str();
    log.add_flag("--events", arguments.events, "Write every message as a line of JSON to standard output");
    addProgress(log, arguments.progress);
    log.add_flag("--verbose", arguments.verbose, "Show the component's log lines");
    addStore(log, arguments.store);
    log.footer(kLogExamples);
    log.callback([&] { chosen = [&] { return runLog(arguments); }; });
}

void addInspect(CLI::App& program, InspectArguments& arguments, Chosen& chosen) {
    CLI::App& inspect =
        *program.add_subcommand("inspect", "Show what each frame of a tape says about itself");
    inspect.add_option("source", arguments.source, "A DV file")->required()->type_name("SOURCE");
    inspect.add_option("--frames", arguments.frames, "Frames A to B, counted from 0, both included")
        ->type_name("A-B");
    inspect.add_flag("--json", arguments.json, "One JSON object a frame");
    inspect.footer(kInspectExamples);
    inspect.callback([&] { chosen = [&] { return runInspect(arguments); }; });
}

void addExport(CLI::App& program, ExportArguments& arguments, Chosen& chosen) {
    CLI::App& command = *program.add_subcommand("export", "Write the reports of a folder for other programs");
    command.add_option("folder", arguments.folder, "A folder that was logged into")
        ->required()
        ->type_name("FOLDER");
    command.add_option("--format", arguments.format, "json or csv")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"json", "csv"}))
        ->capture_default_str();
    command.add_option("--output", arguments.output, "Instead of standard output")->type_name("FILE");
    command.add_flag("--replace", arguments.replace, "Replace a file that is there already");
    command.footer(kExportExamples);
    command.callback([&] { chosen = [&] { return runExport(arguments); }; });
}

void addPreset(CLI::App& program, PresetArguments& arguments, Chosen& chosen) {
    CLI::App& preset = *program.add_subcommand("preset", "Keep settings under a name");
    preset.require_subcommand(1);
    preset.footer(kPresetExamples);
    const auto add = [&](const char* name, const char* what, bool hasName,
                         ExitStatus (*run)(const PresetArguments&)) -> CLI::App& {
        CLI::App& command = *preset.add_subcommand(name, what);
        if (hasName)
            command.add_option("name", arguments.name, "The preset's name")->required()->type_name("NAME");
        addStore(command, arguments.store);
        command.callback(
            [&arguments, &chosen, run] { chosen = [&arguments, run] { return run(arguments); }; });
        return command;
    };
    (void)add("list", "Names of all presets, one a line", false, runPresetList);
    (void)add("show", "A preset as JSON", true, runPresetShow);
    CLI::App& save =
        add("save", "Keep the stored settings, and those given here, under a name", true, runPresetSave);
    addSettings(save, arguments.options);
    (void)add("delete", "Forget a preset", true, runPresetDelete);
}

void addDevices(CLI::App& program, DevicesArguments& arguments, Chosen& chosen) {
    CLI::App& devices = *program.add_subcommand("devices", "List what can be logged from");
    devices.add_flag("--json", arguments.json, "As JSON");
    devices.footer(kDevicesExamples);
    devices.callback([&] { chosen = [&] { return runDevices(arguments); }; });
}

void addTape(CLI::App& program, TapeMakeArguments& arguments, Chosen& chosen) {
    CLI::App& tape = *program.add_subcommand("tape", "Make demonstration tapes");
    tape.require_subcommand(1);
    tape.footer(kTapeExamples);
    CLI::App& make = *tape.add_subcommand("make", "Make a DV file with pictures, sound, timecode and dates");
    make.add_option("scenario", arguments.scenario, "What shall be on the tape, as JSON")
        ->required()
        ->type_name("SCENARIO.json");
    make.add_option("output", arguments.output, "The file to make")->required()->type_name("OUT.dv");
    make.add_flag("--replace", arguments.replace, "Replace a file that is there already");
    addProgress(make, arguments.progress);
    make.footer(kTapeExamples);
    make.callback([&] { chosen = [&] { return runTapeMake(arguments); }; });
}

int told(const std::string& line, ExitStatus status) {
    fmt::print(stderr, "merro: {}\n", line);
    return static_cast<int>(status);
}

std::string firstLineOf(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

} // namespace

int runCommandLine(int argc, char** argv) {
    CLI::App program("merro logs DV tapes: it cuts them into clips where the recording date jumps.", "merro");
    program.set_version_flag("--version", "merro " MERRO_VERSION);
    program.require_subcommand(1);
    program.footer(kOverview);

    Chosen chosen;
    LogArguments log;
    InspectArguments inspect;
    ExportArguments exporting;
    PresetArguments preset;
    DevicesArguments devices;
    TapeMakeArguments tape;
    addLog(program, log, chosen);
    addInspect(program, inspect, chosen);
    addExport(program, exporting, chosen);
    addPreset(program, preset, chosen);
    addDevices(program, devices, chosen);
    addTape(program, tape, chosen);

    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
            return program.exit(error); // --help and --version
        return told(firstLineOf(error.what()) + " (merro --help tells more)", ExitStatus::Usage);
    }
    try {
        return static_cast<int>(chosen());
    } catch (const Failure& failure) {
        return told(failure.what(), failure.status());
    } catch (const std::exception& error) {
        return told(firstLineOf(error.what()), ExitStatus::Failed);
    }
}

} // namespace merro::host
