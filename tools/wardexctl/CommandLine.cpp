#include "CommandLine.h"

#include "output/ExitStatus.h"
#include "output/Output.h"
#include "verbs/Monitor.h"
#include "verbs/ServiceVerbs.h"

#include <functional>
#include <iostream>
#include <memory>
#include <string>

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
    app.require_subcommand(1);
    addServiceVerbs(app, words);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& success)
    {
        return app.exit(success);
    }
    catch (const CLI::ParseError& error)
    {
        std::cerr << "wardexctl: " << error.what() << "\n  See wardexctl --help.\n";
        return kUsage;
    }
    return words.run(Output(words.json, wantsColour()));
}

} // namespace orvo::ctl
