// Whole runs of the program that a person types at: scripts from a file and from the standard input, and a terminal.
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <thread>

#include "desk/link/work_directory.h"
#include "desk/model/model_export.h"
#include "desk/small_models.h"
#include "process/desk_with_process.h"
#include "scratch_folder.h"
#include "testing.h"
#include "trajectory/binary_trajectory.h"
#include "trajectory/written_trajectory.h"

namespace pathstat::desk {
namespace {

namespace fs = std::filesystem;

const std::string butane = "TRAJECTORY " EXAMPLES_DIR "/butane/butane.trj\n";

/// The program with a script in a folder of its own. Pictures are left out: they need another program.
class Program : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(error_, ""); }

  void write_script(const std::string& text) const { std::ofstream(folder() / "lines") << text; }

  /// @return the exit code
  int run(const std::string& arguments) {
    const auto command = "cd '" + folder().string() + "' && '" PATHDESK_PROGRAM "' " + arguments + " >output 2>trouble";
    const int status = std::system(command.c_str());
    output = content_of(folder() / "output");
    trouble = content_of(folder() / "trouble");
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int shell(const std::string& text) {
    write_script(text);
    return run("shell --out out --format tsv,html <lines");
  }
  int script(const std::string& text) {
    write_script(text);
    return run("run lines --out out --format tsv,html");
  }
  fs::path folder() const { return directory_.path(); }
  std::string report() const { return content_of(folder() / "out/report.html"); }

  std::string output, trouble;

 private:
  std::string error_;
  PrivateDirectory directory_{error_};
};

TEST_F(Program, steps_as_a_held_button_does_until_stepping_ends) {
  ASSERT_EQ(shell(butane + "LAST_FRAME_NO 5\n@step forwards 3\n@step forwards 10\n@step backwards 2\n"
                           "FRAME_STEPPING_MODE \"LOOP AT END\"\n@step forwards 9\n@request FRAME_STEP_FORWARDS\n"),
            0)
      << trouble;
  std::istringstream lines(output);
  std::vector<std::string> told;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("Frame ") || line.starts_with("Step")) told.push_back(line);
  }
  EXPECT_THAT(told, ElementsAre("Frame 4 of the range, 0.03 ps", "Stepping ended after 1 of 10 steps.",
                                "Frame 5 of the range, 0.04 ps", "Frame 3 of the range, 0.02 ps",
                                "Frame 2 of the range, 0.01 ps"));
  EXPECT_THAT(output, HasSubstr("FRAME_STEP_FORWARDS = N")) << "the button is let go";
  EXPECT_THAT(report(), HasSubstr("Frame 4 of the range, 0.03 ps"));
}

TEST_F(Program, a_step_without_a_trajectory_fails_and_tells_no_frame) {
  EXPECT_EQ(shell("@step forwards 3\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("standard input:1: FRAME_STEP_FORWARDS failed with status 1"));
  EXPECT_THAT(output, Not(HasSubstr("Frame ")));
}

TEST_F(Program, a_pick_shows_the_frame_and_marks_its_point) {
  const std::string profile = butane + "SELECT_PROPERTIES \"Total Energy\"\nPROFILE\n";
  ASSERT_EQ(shell(profile + "@pick \"profile of total energy\" 0.052\n"), 0) << trouble;
  EXPECT_THAT(output,
              AllOf(HasSubstr("Frame 6 of the range, 0.05 ps"), HasSubstr("Wrote out/Profile-of-Total-Energy.tsv")));
  EXPECT_THAT(report(), AllOf(HasSubstr("marked: "), HasSubstr(" 0.05, ")));

  EXPECT_EQ(shell(profile + "@pick profile-of-total-energy 0.052\n"), 0) << trouble;
  EXPECT_EQ(shell(profile + "@pick Nothing 1\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("there is no graph Nothing; there are: Profile of Total Energy"));
  EXPECT_EQ(shell("@pick Profile 1\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("no graph has been drawn yet"));
}

TEST_F(Program, shows_the_model_as_the_frame_has_it) {
  const auto xyz = ExampleFrame("butane", 4).xyz;
  ASSERT_EQ(shell(butane + "@step forwards 3\n@show model\n"), 0) << trouble;
  std::array<char, 80> first{};
  std::snprintf(first.data(), first.size(), "%11.5f%11.5f%11.5f", xyz[0], xyz[1], xyz[2]);
  EXPECT_THAT(output, AllOf(HasSubstr("1  C1       C       CT      " + std::string(first.data())),
                            HasSubstr("14 (4 C, 10 H)"), ContainsRegex("shown +Frame 4 of the range, 0.03 ps")));
  EXPECT_THAT(report(), HasSubstr("14 (4 C, 10 H)"));
  EXPECT_EQ(shell("@show model\n"), 1);
  EXPECT_THAT(trouble, HasSubstr("there is no model"));
}

struct Ending {
  const char* lines;
  int code;
  const char* trouble;
  bool goes_on;  ///< the line behind these is run
};

TEST_F(Program, ends_as_its_lines_do_from_a_file_and_from_the_input) {
  for (const auto& [lines, code, told, goes_on] :
       {Ending{"MSD_ATOMS ALL\n", 0, "", true}, Ending{"NO_SUCH_WORD\n", 1, ":1: NO_SUCH_WORD failed with", false},
        Ending{"@stop-on-error no\nNO_SUCH_WORD\n", 1, ":2: NO_SUCH_WORD failed with", true},
        Ending{"TRAJECTORY none.trj\n", 1, "There is no file", false}, Ending{"\n@stp forwards\n", 2, ":2: ", false},
        Ending{"STOP\n", 0, "", false}}) {
    const auto text = std::string(lines) + "@request EXTREMA_NUMBER\n";
    for (const bool from_file : {true, false}) {
      EXPECT_EQ(from_file ? script(text) : shell(text), code) << lines;
      EXPECT_THAT(trouble, HasSubstr(told)) << lines;
      EXPECT_EQ(output.find("EXTREMA_NUMBER = ") != std::string::npos, goes_on) << lines;
    }
  }
  EXPECT_EQ(run("run nowhere.script"), 2);
  for (const auto* endless : {"run /dev/zero", "shell </dev/zero", "panel --no-open /dev/zero"}) {
    EXPECT_EQ(run(endless), 2) << endless;
    EXPECT_THAT(trouble, HasSubstr("cannot be read: it has more than 16777216 bytes"));
  }
  EXPECT_EQ(run("run 'x\x1b[2J' '--for\x1b[2J'"), 2);
  EXPECT_THAT(trouble, Not(HasSubstr("\x1b")));
  EXPECT_EQ(run("shell --program /bin/true <lines"), 3);
}

TEST_F(Program, tells_a_newcomer_why_a_line_failed_and_what_passed_in_silence) {
  EXPECT_EQ(script("@stop-on-error no\nRDF\n" + butane +
                   "LAST_FRAME_NO 100000\nSELECT_PROPERTIES Temprature\nPROFILE now\n"
                   "MSD_MAX_INTERVAL_NO 100000\nEXTREMA_NUMBER 5\n"),
            1);
  for (const auto* told :
       {"lines:2: RDF failed with status 1\n    no trajectory is loaded",
        "lines:4: LAST_FRAME_NO failed with status 1\n    100000 is above 1000, the last frame of the file",
        "lines:5: warning: SELECT_PROPERTIES does not know \"Temprature\": did you mean Temperature?",
        "lines:6: PROFILE failed with status 1\n    No property is selected",
        "    PROFILE takes no argument: \"now\" is passed over",
        "lines:7: warning: MSD_MAX_INTERVAL_NO is 999 now, not 100000: "}) {
    EXPECT_THAT(trouble, HasSubstr(told));
  }
  EXPECT_THAT(trouble, Not(HasSubstr("lines:8"))) << "nothing is wrong with the last line";
  EXPECT_THAT(report(), HasSubstr("did you mean Temperature?"));
  EXPECT_THAT(output, Not(HasSubstr("revision")));
  EXPECT_EQ(run("run lines --verbose"), 1);
  EXPECT_THAT(output, HasSubstr("revision"));
  EXPECT_THAT(trouble, HasSubstr("PATHSTAT_MSG_30: No property is selected"));
}

TEST_F(Program, leaves_the_table_of_a_profile_as_the_engine_logged_it) {
  ASSERT_EQ(script(butane + "SELECT_PROPERTIES \"Total Energy\" Temperature\nSTATISTICS_PLOT no\n"
                            "STATISTICS_FILENAME energies\nSTATISTICS_FILE yes\nPROFILE\n"),
            0)
      << trouble;
  std::ifstream table(folder() / "out/energies.dat");
  std::string line;
  ASSERT_TRUE(std::getline(table, line)) << "no table";
  EXPECT_EQ(line, "Time\tTotal Energy\tTemperature");
  const auto energies = log_column("butane", "TotEng"), temperatures = log_column("butane", "Temp");
  for (std::size_t k = 0; k < energies.size(); ++k) {
    ASSERT_TRUE(std::getline(table, line)) << "row " << k;
    std::istringstream cells(line);
    double time = 0, energy = 0, temperature = 0;
    cells >> time >> energy >> temperature;
    ASSERT_NEAR(time, 0.01 * static_cast<double>(k), 1e-9);
    ASSERT_NEAR(energy, energies[k], 1e-5);
    ASSERT_NEAR(temperature, temperatures[k], 1e-4);
  }
  EXPECT_FALSE(std::getline(table, line)) << "more rows than frames";
}

/// A text as a word for the shell.
std::string shell_word(const std::string& text) {
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

TEST_F(Program, takes_names_of_files_as_names_and_as_nothing_else) {
  const auto profile = butane + "LAST_FRAME_NO 3\nSELECT_PROPERTIES Temperature\nPROFILE\n";
  for (const std::string name :
       {"|touch PWNED;#", "<a", "-a", "it's", "two\nlines", "`touch PWNED`", "$(touch PWNED)", "\"q\""}) {
    std::ofstream(folder() / name) << profile;
    const bool pictures = name.front() == '|' || name.front() == '-' || name == "it's";
    EXPECT_EQ(run("run --out=" + shell_word(name) + ".out --workdir=" + shell_word(name) + ".work --format " +
                  (pictures ? "svg,png,html" : "tsv,html") + " ./" + shell_word(name)),
              0)
        << name << trouble;
    EXPECT_TRUE(fs::exists(folder() / (name + ".out") / "report.html")) << name;
    EXPECT_TRUE(fs::exists(folder() / (name + ".out") /
                           (pictures ? "Profile-of-Temperature.svg" : "Profile-of-Temperature.tsv")))
        << name;
  }
  for (const auto& entry : fs::recursive_directory_iterator(folder())) EXPECT_NE(entry.path().filename(), "PWNED");
}

TEST_F(Program, tells_of_results_that_do_not_fit_and_leaves_no_part_of_them) {
  write_script(butane + "LAST_FRAME_NO 3\nSELECT_PROPERTIES Temperature\nPROFILE\n");
  const auto command =
      "cd '" + folder().string() + "' && ulimit -f 6 && '" PATHDESK_PROGRAM "' run lines >output 2>trouble";
  EXPECT_EQ(WEXITSTATUS(std::system(command.c_str())), 1);
  trouble = content_of(folder() / "trouble");
  EXPECT_THAT(trouble, AllOf(HasSubstr("cannot write out/report.html: File too large\n"),
                             HasSubstr("not drawn: Profile-of-Temperature.svg, Profile-of-Temperature.png: "),
                             HasSubstr("the results in out are not complete")));
  EXPECT_THAT(content_of(folder() / "output"), Not(HasSubstr("Results are in")));
  for (const auto& entry : fs::directory_iterator(folder() / "out")) {
    EXPECT_THAT(entry.path().filename().string(), AnyOf("Profile-of-Temperature.tsv", "summary.tsv", "summary.json"));
  }
}

TEST_F(Program, says_what_came_of_a_run_in_numbers) {
  const std::string water = "TRAJECTORY " EXAMPLES_DIR "/water/water.trj\n";
  ASSERT_EQ(script(water + "SELECT_PROPERTIES Temperature\nPROFILE\nRDF_BETWEEN ELEMENTS\nRDF_CUTOFF 3\n"
                           "RDF_TYPE H O\nRDF\nRDF_TYPE O H\nRDF\nRDF_TYPE H H\nRDF\n"
                           "MSD_MAX_INTERVAL_NO 40\nMSD\nMIN_FIT_TIME 0.1\nMAX_FIT_TIME 0.3\nLINEAR_FIT\n"),
            0)
      << trouble;
  const auto table = content_of(folder() / "out/summary.tsv");
  EXPECT_THAT(table, ContainsRegex("series\tTemperature\tmean\t[0-9.]+\t[0-9.]+\tK\t"));
  // Bonds hold the atoms of a molecule at fixed distances: one O around each H, two H around each O.
  EXPECT_THAT(table,
              AllOf(ContainsRegex("g\\(r\\) of H and O[^\t]*\tcoordination number\t(1|1.0000[0-9]*|0.9999[0-9]*)\t"),
                    ContainsRegex("g\\(r\\) of O and H[^\t]*\tcoordination number\t(2|2.0000[0-9]*|1.9999[0-9]*)\t"),
                    ContainsRegex("D of all atoms[^\t]*\tfitted from\t0.1\t"),
                    ContainsRegex("D of all atoms[^\t]*\tfitted to\t0.3\t"),
                    ContainsRegex("D of all atoms[^\t]*\tdiffusion coefficient\t[-0-9.e]+\t[0-9.e-]+\tÅ²/ps")));
  for (const auto* name : {"rdf-H-O", "rdf-O-H", "rdf-H-H", "coordination-O-H", "msd", "diffusion"}) {
    EXPECT_TRUE(fs::exists(folder() / "out" / (std::string(name) + ".tsv"))) << name;
  }
  EXPECT_THAT(
      content_of(folder() / "out/coordination-O-H.tsv"),
      HasSubstr("# command: RDF\n# settings: SELECT_PROPERTIES Temperature; RDF_BETWEEN ELEMENTS; RDF_CUTOFF 3; "
                "RDF_TYPE O H\n# atoms: O and H, frames 1 to 300\n"));
  EXPECT_THAT(report(), HasSubstr("What the run says"));
  EXPECT_THAT(output, HasSubstr("What the run says:\n  Temperature: mean "));
}

TEST_F(Program, tells_of_command_words) {
  EXPECT_EQ(run("words msd_atoms"), 0);
  EXPECT_THAT(output, HasSubstr("Arguments: one of ALL, SELECTED"));
}

/// Ends the process that the program runs, in the middle of everything.
void kill_child_of(pid_t program) {
  std::ifstream children("/proc/" + std::to_string(program) + "/task/" + std::to_string(program) + "/children");
  pid_t child = 0;
  if (children >> child) ::kill(child, SIGKILL);
}

/// Stands in the keys for the loss of the process.
constexpr char kill_key = '\x1c';

/// All that the program writes to its terminal until it ends, when these keys are typed, a line for each prompt.
std::string typed(const std::string& keys, const fs::path& state, int& status) {
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    ::setenv("XDG_STATE_HOME", state.c_str(), 1);
    ::setenv("TERM", "dumb", 1);
    const auto out = (state / "out").string();
    ::execl(PATHDESK_PROGRAM, "pathdesk", "shell", "--out", out.c_str(), "--format", "tsv", nullptr);
    ::_exit(127);
  }
  std::string shown;
  std::size_t prompts = 0, sent = 0;
  std::array<char, 4096> block{};
  pollfd waiting{terminal, POLLIN, 0};
  for (int quiet_seconds = 0; quiet_seconds < 60;) {
    if (::poll(&waiting, 1, 1000) == 0) {
      ++quiet_seconds;
      // What is typed just before a line begins is lost to the terminal, or stands in the line: it is cleared (Ctrl-U),
      // and the end typed again.
      const std::array again{'\x15', keys.back()};
      if (sent == keys.size() && ::write(terminal, again.data(), again.size()) < 0) break;
      continue;
    }
    const auto got = ::read(terminal, block.data(), block.size());
    if (got <= 0) break;
    shown.append(block.data(), static_cast<std::size_t>(got));
    const auto next_prompt = [&] {
      return std::min(shown.find("pathdesk> ", prompts), shown.find("Choice [", prompts));
    };
    // A line is typed when the prompt for it has come.
    for (auto at = next_prompt(); at != std::string::npos && sent < keys.size(); at = next_prompt()) {
      prompts = at + 1;
      if (keys[sent] == kill_key) {
        kill_child_of(child);
        ++sent;
      }
      const auto end = std::min(keys.find('\r', sent), keys.size() - 1) + 1;
      if (::write(terminal, keys.data() + sent, end - sent) < 0) break;
      sent = end;
    }
  }
  ::close(terminal);
  ::waitpid(child, &status, 0);
  return shown;
}

TEST_F(Program, asks_what_a_script_is_told_and_shows_the_value_of_a_word_alone) {
  int status = -1;
  const auto shown = typed("LAST_FRAME_NO\r" + butane.substr(0, butane.size() - 1) +
                               "\rEXTREMA_NUMBER 7\rRESET\rx\r2\r"
                               "EXTREMA_NUMBER\rRESET\rres\rEXTREMA_NUMBER\r\x04",
                           folder(), status);
  EXPECT_THAT(shown, AllOf(HasSubstr("takes: integer from the first frame"),
                           HasSubstr("  1  Reset\r\n  2  Leave as it is\r\nChoice [1]: "),
                           HasSubstr("type a number from 1 to 2")));
  const auto kept = shown.find("EXTREMA_NUMBER = 7"), reset = shown.find("EXTREMA_NUMBER = ", kept + 1);
  EXPECT_NE(kept, std::string::npos) << shown;
  ASSERT_NE(reset, std::string::npos) << shown;
  EXPECT_NE(shown.substr(reset, 18), "EXTREMA_NUMBER = 7");
}

TEST_F(Program, goes_on_with_its_settings_when_the_process_is_lost) {
  int status = -1;
  const auto shown =
      typed(butane.substr(0, butane.size() - 1) + "\rLAST_FRAME_NO 50\rFIRST_FRAME_NO 7\rEXTREMA_NUMBER 7\r" +
                kill_key + "PROFILE\rEXTREMA_NUMBER\rFIRST_FRAME_NO\rLAST_FRAME_NO\r\x04",
            folder(), status);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_THAT(shown, AllOf(HasSubstr("PROFILE did not end"), HasSubstr("A new pathstat runs; 4 lines were repeated.")));
  for (const auto* value : {"EXTREMA_NUMBER = 7", "FIRST_FRAME_NO = 7", "LAST_FRAME_NO = 50"}) {
    EXPECT_THAT(shown, HasSubstr(value));
  }
}

TEST_F(Program, says_in_one_line_what_a_file_is_that_is_no_script) {
  write_script("EXTREMA_NUMBER 5\n");
  for (const auto& [arguments, told] :
       {std::pair{"run '" EXAMPLES_DIR "/butane/butane.trj'",
                  "butane.trj is a trajectory, not a script; try pathdesk analyse"},
        {"run '" EXAMPLES_DIR "/butane/butane.qfx'", "butane.qfx is a model, not a script"},
        {"run '" PATHDESK_PROGRAM "'", "is not a text, and so not a script"},
        {"lines", "to run a script: pathdesk run lines"},
        {"'" EXAMPLES_DIR "/butane/butane.trj'", "to see what a file holds: pathdesk info"},
        {"runn lines", "there is no runn; did you mean run?"},
        {"run lines --fromat tsv", "there is no option --fromat; did you mean --format?"}}) {
    EXPECT_EQ(run(arguments), 2) << arguments;
    EXPECT_THAT(trouble, HasSubstr(told));
    EXPECT_EQ(std::count(trouble.begin(), trouble.end(), '\n'), 1) << trouble;
  }
}

TEST_F(Program, runs_a_script_that_comes_through_a_pipe) {
  const auto pipe = (folder() / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&pipe] { std::ofstream(pipe) << "EXTREMA_NUMBER 5\nNO_SUCH_WORD\n"; });
  EXPECT_EQ(run("run '" + pipe + "'"), 1);
  writer.join();
  EXPECT_THAT(trouble, HasSubstr("pipe:2: "));
}

TEST_F(Program, waits_for_nothing_that_is_no_file_where_it_reads_one) {
  for (const char* name : {"x.arc", "x.his", "x.trj", "x.car", "x.qfx", "x.cif", "x.xyz", "x.tbl"}) {
    const auto path = (folder() / name).string();
    for (const bool endless : {false, true}) {
      fs::remove(path);
      if (endless) {
        fs::create_symlink("/dev/zero", path);
      } else {
        ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
      }
      const std::string ending = fs::path(name).extension();
      const bool structure = std::string_view(".car.qfx.cif.xyz").find(ending) != std::string_view::npos;
      write_script((structure ? "IMPORT_STRUCTURE " : ending == ".tbl" ? "TABLE " : "TRAJECTORY ") + path + '\n');
      EXPECT_EQ(run("run lines"), 1) << path;
      EXPECT_THAT(trouble, HasSubstr(name));
      if (ending == ".tbl") continue;
      EXPECT_THAT(trouble, HasSubstr("is a pipe or a device, not a file"));
      if (structure) continue;
      EXPECT_EQ(run("info '" + path + "'"), 2);
      EXPECT_THAT(trouble, HasSubstr("is a pipe or a device, not a file"));
    }
  }
}

TEST_F(Program, tells_where_it_can_and_fails_where_its_output_is_lost) {
  fs::copy(EXAMPLES_DIR "/butane/butane.trj", folder() / "a.trj");
  fs::copy(EXAMPLES_DIR "/butane/butane.qfx", folder() / "a.qfx");
  struct Row {
    const char* arguments;
    int code;
  };
  for (const auto& [arguments, code] :
       {Row{"info a.trj >/dev/full", 2}, Row{"--help >/dev/full", 2}, Row{"words >/dev/full", 2},
        Row{"run nowhere.script 2>/dev/full", 2}, Row{"nothing 2>/dev/full", 2}}) {
    const auto command = "cd '" + folder().string() + "' && '" PATHDESK_PROGRAM "' " + arguments;
    const int status = std::system(("{ " + command + "; } 2>/dev/null").c_str());
    EXPECT_EQ(WEXITSTATUS(status), code) << arguments;
  }
  const auto closed = "cd '" + folder().string() +
                      "' && '" PATHDESK_PROGRAM
                      "' export a.trj -o a.xyz --frame 1 --select 'element C or name ZZ' <&- >&- 2>&-";
  EXPECT_EQ(std::system(closed.c_str()), 0);
  EXPECT_THAT(content_of(folder() / "a.xyz"), StartsWith("4\n"));
}

TEST_F(Program, tells_of_positions_that_are_no_numbers) {
  WrittenTrajectory written(2, {1, 2});
  for (int frame = 0; frame < 8; ++frame) {
    written.set(1000, {0.25 * frame}).set(1071, {1, 2, 3, 4, frame == 5 ? NAN : 5, 6}).frame();
  }
  fs::copy(written.path(), folder() / "a.trj");
  auto model = carbon_model({{0, 0, 0}, {1, 0, 0}});
  model.file_atoms = 2;
  ASSERT_EQ(write_model_file(model, folder() / "a.qfx"), "");
  EXPECT_EQ(script("TRAJECTORY a.trj\nMSD\n"), 0) << trouble;
  EXPECT_THAT(trouble, ContainsRegex("lines:2: warning: .*: [1-9][0-9]* of [0-9]+ values are no numbers"));
  EXPECT_EQ(run("export a.trj -o a.xyz"), 2);
  EXPECT_THAT(trouble, HasSubstr("atom 2 stands nowhere: a coordinate is no number"));
}

TEST_F(Program, replaces_no_file_of_the_user_by_a_link) {
  for (const char* extension : {".trj", ".qfx"}) {
    fs::copy(EXAMPLES_DIR "/butane/butane" + std::string(extension), folder() / ("a\"'b" + std::string(extension)));
    std::ofstream(folder() / ("a__b" + std::string(extension))) << "of the user";
  }
  EXPECT_EQ(run("analyse 'a\"'\\''b.trj' --out ."), 2);
  EXPECT_THAT(trouble, HasSubstr("a__b.trj cannot be made: File exists"));
  EXPECT_EQ(content_of(folder() / "a__b.trj") + content_of(folder() / "a__b.qfx"), "of the userof the user");
}

TEST_F(Program, refuses_a_request_of_more_than_a_mebibyte_and_ends) {
  constexpr std::size_t most = 1048576;
  for (const auto& [bytes, code] : {std::pair{most, 0}, std::pair{most + 1, 2}, std::pair{most + 50000, 2}}) {
    write_script(std::string(bytes, 'x') + '\n');
    EXPECT_EQ(run("converse <lines"), code) << bytes;
    EXPECT_EQ(output.find("a request has at most 1048576 bytes") != std::string::npos, bytes > most) << bytes;
  }
}

TEST_F(Program, tells_one_trouble_in_one_line_with_the_file_or_what_the_word_takes) {
  std::ofstream(folder() / "bad.cif") << "no block\n";
  std::ofstream(folder() / "bad.xyz") << "no number\n";
  fs::create_symlink("own.cif", folder() / "own.cif");  // to itself: the system opens it for nobody
  struct Case {
    std::string line, told;
  };
  const std::string here = fs::canonical(folder()).string() + "/";
  const Case cases[]{
      {"IMPORT_STRUCTURE bad.cif", here + "bad.cif is no whole CIF: line 1:1: expected block header (data_)"},
      {"IMPORT_STRUCTURE bad.xyz", here + "bad.xyz, line 1: here stands the number of atoms"},
      {"IMPORT_STRUCTURE none.car", here + "none.car cannot be opened: No such file or directory"},
      {"IMPORT_STRUCTURE own.cif", here + "own.cif cannot be opened: Too many levels of symbolic links"},
      {"TABLE bad.xyz", here + "bad.xyz is no table file: its functions are named between lines that begin with #."},
      {"TABLE none.dat", "The table file " + here + "none.dat cannot be opened: No such file or directory."},
      {"TABLE own.cif", "The table file " + here + "own.cif cannot be opened: Too many levels of symbolic links."},
      {"VOLUME own.cif",
       here + "own.cif is no volume that can be used: it cannot be opened: Too many levels of symbolic links."},
      {"EXTREMA_NUMBER 101",
       "101 is above the highest value allowed, 100 (status 1002); EXTREMA_NUMBER takes an integer from 1 to 100"},
      {"BONDING SOME",
       "The argument is none of the words allowed here (status 1003); BONDING takes one of NONE, FACES, ALL"},
      {"EXPORT_STRUCTURE none/x.cif", here + "none/x.cif cannot be written: No such file or directory"},
  };
  std::string lines = "@stop-on-error no\nCELL 9 9 9 90 90 90\nSITE C 0 0 0\nBUILD_CRYSTAL\n";
  for (const auto& each : cases) lines += each.line + "\n";
  EXPECT_EQ(script(lines), 1);
  std::istringstream told(trouble);
  for (const auto& each : cases) {
    std::string failed, reason;
    std::getline(told, failed), std::getline(told, reason);
    EXPECT_THAT(failed, HasSubstr(each.line.substr(0, each.line.find(' ')) + " failed with status")) << trouble;
    EXPECT_EQ(reason, "    " + each.told);
  }
  EXPECT_EQ(told.peek(), EOF) << trouble;
}

TEST_F(Program, takes_typed_lines_with_completion_and_goes_on_behind_a_failed_one) {
  int status = -1;
  const auto shown = typed(butane.substr(0, butane.size() - 1) + "\rNO_SUCH_WORD\rcurrent_frame_n\t7\r@sh\tmodel\r\x04",
                           folder(), status);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
  EXPECT_THAT(shown, HasSubstr("NO_SUCH_WORD failed with status"));
  EXPECT_THAT(shown, HasSubstr("Frame 7 of the range, 0.06 ps")) << shown;
  EXPECT_THAT(content_of(folder() / "pathdesk/history"), HasSubstr("CURRENT_FRAME_NUMBER 7\n@show model\n"));
}

}  // namespace
}  // namespace pathstat::desk
