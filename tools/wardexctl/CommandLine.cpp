#include "CommandLine.h"

#include "log/LevelMask.h"
#include "output/ExitStatus.h"
#include "output/Output.h"
#include "top/Top.h"
#include "verbs/Doctor.h"
#include "verbs/LogLevel.h"
#include "verbs/LogVerb.h"
#include "verbs/Monitor.h"
#include "verbs/ServiceVerbs.h"
#include "verbs/StateVerbs.h"
#include "verbs/TimelineVerb.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace orvo::ctl
{

namespace
{

/// What the words decide; verbs read it when they run.
struct Words
{
    bool json{false};
    std::string name;
    std::string duration;
    bool noWait{false};
    MonitorOptions monitor;
    LogWords log;
    bool follows{false};
    LogLevelWords logLevel;
    TimelineWords timeline;
    std::function<int(const Output&)> run;
};

constexpr char kNames[] = "corvane, pictor, wirl, quorl, or a bus name";

CLI::App* addVerb(CLI::App& app, Words& words, const char* name, const char* description,
                  const char* examples, std::function<int(const Output&)> run)
{
    CLI::App* const verb = app.add_subcommand(name, description);
    verb->footer(std::string("Examples:\n") + examples);
    verb->add_flag("--json", words.json, "For programs: see docs/wardexctl.md");
    verb->final_callback([&words, run = std::move(run)] { words.run = run; });
    return verb;
}

void addServiceVerbs(CLI::App& app, Words& words)
{
    addVerb(app, words, "list", "The services that this device runs",
            "  wardexctl list\n  wardexctl list --json", listServices);
    addVerb(app, words, "is-up", "Exit status 0: up, 3: not up, 4: unknown, 5: nobody answers",
            "  wardexctl is-up pictor && echo ready",
            [&words](const Output& output) { return isServiceUp(output, words.name); })
        ->add_option("NAME", words.name, kNames)
        ->required();
    const auto addDeed = [&](const char* name, const char* description, Deed deed)
    {
        CLI::App* const verb =
            addVerb(app, words, name, description,
                    ("  wardexctl " + std::string(name) + " pictor\n  wardexctl " + name +
                     " pictor --no-wait")
                        .c_str(),
                    [&words, deed](const Output& output)
                    { return actOnService(output, deed, words.name, !words.noWait); });
        verb->add_option("NAME", words.name, kNames)->required();
        verb->add_flag("--no-wait", words.noWait, "Do not wait for the script");
    };
    addDeed("start", "Starts a service by its script, and waits", Deed::Start);
    addDeed("stop", "Stops a service by its script, and waits", Deed::Stop);
    addDeed("restart", "Stops a service if it runs, and starts it", Deed::Restart);
    CLI::App* const grace =
        addVerb(app, words, "grace", "Gives a busy service more time for its next pings",
                "  wardexctl grace pictor 30s",
                [&words](const Output& output)
                { return graceService(output, words.name, words.duration); });
    grace->add_option("NAME", words.name, kNames)->required();
    grace->add_option("DURATION", words.duration, "30s, 1500ms, 10m")->required();
    CLI::App* const monitor =
        addVerb(app, words, "monitor", "Shows services come and go, one line per change",
                "  wardexctl monitor\n  wardexctl monitor --until pictor=up --timeout 60s",
                [&words](const Output& output) { return Monitor(output).run(words.monitor); });
    monitor->add_option("--until", words.monitor.until, "NAME=up or NAME=down: ends with it");
    monitor->add_option("--timeout", words.monitor.timeout, "Ends after that time");
}

/// The complaint about a text that is no number of records; empty when it is one.
std::string complaintOfCount(const std::string& text)
{
    const bool isNumber =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? "" : "'" + text + "' is no number of records: say 20";
}

void addLogVerbs(CLI::App& app, Words& words)
{
    CLI::App* const log = addVerb(
        app, words, "log", "The device's log, stored and live",
        "  wardexctl log -n 20\n  wardexctl log -f --level WARN\n"
        "  wardexctl log --since 10m -g 'pictor.*dead'\n  wardexctl log -f --json",
        [&words](const Output& output) { return LogVerb(output, words.log, words.follows).run(); });
    log->add_flag("-f,--follow", words.follows, "Goes on with the records that come");
    log->add_option("-n,--newest", words.log.newest, "At most so many of the stored records")
        ->check(complaintOfCount);
    log->add_option("--since", words.log.since, "10m ago, or from 05:30 or 05:30:10 on");
    log->add_option("--level", words.log.level, "This level and more serious ones");
    log->add_option("--source", words.log.source, "Only records of this program");
    log->add_option("-g,--grep", words.log.regex, "Only messages that match the expression");
    CLI::App* const level =
        addVerb(app, words, "loglevel", "Shows or sets which levels programs log",
                "  wardexctl loglevel\n  wardexctl loglevel wardex +TRACE --for 10m\n"
                "  wardexctl loglevel wardex -INFO\n"
                "  wardexctl loglevel wardex WARN+ --save\n  wardexctl loglevel all default",
                [&words](const Output& output) { return logLevel(output, words.logLevel); });
    level->add_option("SOURCE", words.logLevel.source, "A program's name, or all");
    level->add_option("LEVELS", words.logLevel.levels,
                      "all, default, none, WARN, WARN+ (and worse), +TRACE, -DEBUG; with commas");
    level->add_option("--for", words.logLevel.span, "Falls back by itself after that time");
    level->add_option("--after", words.logLevel.after, "Sets it only after that time");
    // For the process that --for leaves behind; in no help.
    level->add_flag("--falls-back", words.logLevel.fallsBack)->group("");
    level->add_flag("--save", words.logLevel.saves, "Stores it for the programs' next starts, too");
}

void addStateVerbs(CLI::App& app, Words& words)
{
    addVerb(app, words, "status", "How the device is, and what comes next (the default)",
            "  wardexctl\n  wardexctl status pictor\n  wardexctl status --json",
            [&words](const Output& output) { return showStatus(output, words.name); })
        ->add_option("NAME", words.name, kNames);
    addVerb(app, words, "why", "The chain of events behind the last restart or reboot",
            "  wardexctl why\n  wardexctl why pictor",
            [&words](const Output& output) { return explainWhy(output, words.name); })
        ->add_option("NAME", words.name, kNames);
    CLI::App* const timeline = addVerb(
        app, words, "timeline", "States, restarts and reboots over time",
        "  wardexctl timeline\n  wardexctl timeline --since 10m\n"
        "  wardexctl timeline -o /tmp/timeline.svg\n  wardexctl timeline --since 05:30 --json",
        [&words](const Output& output) { return showTimeline(output, words.timeline); });
    timeline->add_option("--since", words.timeline.since,
                         "From 10m ago, or from 05:30 or 05:30:10 on; else all that is stored");
    timeline->add_option("-o,--output", words.timeline.file,
                         "A picture instead: FILE.svg, or FILE.html; replaced when it exists");
    addVerb(app, words, "top", "The live screen: status and log, with keys to act",
            "  wardexctl top\n  wardexctl top --json", runTop);
    addVerb(app, words, "doctor", "Checks the installation and says what to do",
            "  wardexctl doctor", runDoctor);
}

/// The words behind the program's name, in the order that the library wants: the last one first.
///
/// "loglevel wardex -INFO" has a word that would be taken for options: it goes behind the mark that
/// ends them, unless the person has set that mark.
std::vector<std::string> wordsOf(int argc, char** argv)
{
    constexpr char kEndOfOptions[] = "--";
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const auto verb = std::find(words.begin(), words.end(), "loglevel");
    const bool isMarked = std::find(verb, words.end(), kEndOfOptions) != words.end();
    const auto removal = isMarked ? words.end() : std::find_if(verb, words.end(), isRemoval);
    if (removal != words.end())
    {
        std::rotate(removal, removal + 1, words.end());
        words.insert(words.end() - 1, kEndOfOptions);
    }
    std::reverse(words.begin(), words.end());
    return words;
}

int complainOfWords(const CLI::App& app, int argc, char** argv, const std::string& cause)
{
    const std::vector<CLI::App*> verbs = app.get_subcommands();
    const std::string verb = verbs.empty() ? "" : verbs.front()->get_name();
    // The library tells nothing of flags when other words are wrong.
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const bool isJson = std::find(words.begin(), words.end(), "--json") != words.end();
    Output(isJson, false)
        .problem({verb.empty() ? "command line" : verb, cause,
                  "See wardexctl " + (verb.empty() ? "" : verb + " ") + "--help."});
    return kUsage;
}

} // namespace

int runCommandLine(int argc, char** argv)
{
    Words words;
    CLI::App app("What the supervisor of this device does, why, and how to act through it.");
    app.name("wardexctl");
    app.set_version_flag("--version", "wardexctl " WARDEX_VERSION);
    app.footer(
        "Exit status: 0 done or up, 1 refused or trouble found, 3 not up, 4 unknown service,\n"
        "5 the supervisor does not answer, 6 the log does not answer, 64 wrong words.\n"
        "wardexctl VERB --help shows a verb's options and examples.");
    app.require_subcommand(0, 1);
    app.add_flag("--json", words.json, "For programs: see docs/wardexctl.md");
    words.run = [](const Output& output)
    {
        return showStatus(output, "");
    };
    addStateVerbs(app, words);
    addServiceVerbs(app, words);
    addLogVerbs(app, words);
    try
    {
        app.parse(wordsOf(argc, argv));
    }
    catch (const CLI::Success& success)
    {
        return app.exit(success);
    }
    catch (const CLI::ParseError& error)
    {
        return complainOfWords(app, argc, argv, error.what());
    }
    return words.run(Output(words.json, wantsColour()));
}

} // namespace orvo::ctl
