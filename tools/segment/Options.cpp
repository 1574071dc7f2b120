#include "Options.hpp"

#include "Formats.hpp"

#include "VelmarinKormelinSegmentation.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include <sched.h>

namespace SegmentTool
{
namespace
{
constexpr std::size_t nHelpNames = 26; // columns of the options' names in the help
constexpr std::size_t nHelpText = 53;  // and of their descriptions
constexpr int nMostJobs = 1024;
constexpr double dMostPpi = 10000.0;
constexpr double dMostSeconds = 86400.0;
constexpr unsigned long nMostShards = 1000000;

constexpr const char* szDescription =
    "Cuts slap pictures, several fingers pressed on a scanner at the same time, into\n"
    "single fingers: tells where each finger lies in the picture and which finger of\n"
    "which hand it is, and writes a picture of each. Fingers are dark on a light\n"
    "ground, with their tips up.";

constexpr const char* szFooter = "Results go to standard output (or --output), messages to standard error. Finger\n"
                                 "positions are friction ridge codes of ANSI/NIST-ITL: 1 right thumb, 2 right\n"
                                 "index, 3 right middle, 4 right ring, 5 right little, 6 left thumb, 7 left index,\n"
                                 "8 left middle, 9 left ring, 10 left little, 0 undecided. Pictures have at most\n"
                                 "20000 by 20000 pixels. A resolution is never guessed: a file that tells none, or\n"
                                 "72 or 96 pixels per inch, is an error unless --ppi gives it.\n"
                                 "\n"
                                 "Exit codes:\n"
                                 "  0    every picture segmented\n"
                                 "  1    finished; a picture shows no finger, or fewer than --expect\n"
                                 "  2    wrong usage\n"
                                 "  3    finished; a picture cannot be read, or its fingers not be written without\n"
                                 "       overwriting those of another picture\n"
                                 "  4    not enough memory, results cannot be written (full disk, closed pipe,\n"
                                 "       no rights), or an internal fault\n"
                                 "  129, 130, 143   ended by SIGHUP, SIGINT, SIGTERM\n"
                                 "\n"
                                 "Examples:\n"
                                 "  kormelin-segment -o fingers slap.png\n"
                                 "  kormelin-segment --format json -r archive --output all.jsonl -o fingers --tree\n"
                                 "  kormelin-segment --format csv --ppi 500 --expect 4 --report p.html slaps/*.bmp\n"
                                 "  kormelin-segment --decoder 'my-wsq-decoder --pgm \"$1\"' --ppi 500 slap.wsq";

// The processors that this process may run on.
int AvailableProcessors()
{
    cpu_set_t cSet;
    if (sched_getaffinity(0, sizeof cSet, &cSet) != 0) return 1;
    return std::max(1, CPU_COUNT(&cSet));
}

std::vector<std::string> DefaultEndings(bool bDecoder)
{
    std::vector<std::string> aEndings = {"bmp", "dib", "pbm", "pgm", "ppm", "pnm"};
    const auto Add = [&aEndings](EFormat eFormat, std::initializer_list<const char*> aszMore)
    {
        if (CanRead(eFormat)) aEndings.insert(aEndings.end(), aszMore.begin(), aszMore.end());
    };
    Add(EFormat::ePng, {"png"});
    Add(EFormat::eJpeg, {"jpg", "jpeg"});
    Add(EFormat::eTiff, {"tif", "tiff"});
    Add(EFormat::eJp2, {"jp2", "j2k", "jpc", "j2c"});
    if (bDecoder) aEndings.emplace_back("wsq");
    return aEndings;
}

// "i/n", i from 1 to n.
void ParseShard(const std::string& sText, ClListOptions& cList)
{
    const std::size_t nSlash = sText.find('/');
    const auto IsNumber = [](const std::string& s)
    { return !s.empty() && s.size() <= 9 && s.find_first_not_of("0123456789") == std::string::npos; };
    if (nSlash != std::string::npos && IsNumber(sText.substr(0, nSlash)) && IsNumber(sText.substr(nSlash + 1)))
    {
        cList.m_nShard = std::stoul(sText.substr(0, nSlash));
        cList.m_nShards = std::stoul(sText.substr(nSlash + 1));
        if (cList.m_nShard >= 1 && cList.m_nShard <= cList.m_nShards && cList.m_nShards <= nMostShards) return;
    }
    throw CLI::ValidationError("--shard", "must be I/N, I from 1 to N, not " + sText);
}

std::vector<std::string> SplitEndings(const std::string& sText)
{
    std::vector<std::string> aEndings;
    std::string sOne;
    for (const char c : sText + ',')
    {
        if (c != ',')
        {
            sOne += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
            continue;
        }
        if (!sOne.empty() && sOne[0] == '.') sOne.erase(0, 1);
        if (!sOne.empty()) aEndings.push_back(sOne);
        sOne.clear();
    }
    if (aEndings.empty()) throw CLI::ValidationError("--endings", "names no ending");
    return aEndings;
}

// Texts that become values of other types once all is read.
struct ClTexts
{
    std::string m_sShard;
    std::string m_sEndings;
    std::string m_sRecords = "text";
    std::string m_sImageFormat = HAVE_PNG != 0 ? "png" : "bmp";
};

void AddInputOptions(CLI::App& cApp, ClOptions& cOptions, ClTexts& cTexts)
{
    ClListOptions& cList = cOptions.m_cList;
    ClReading& cReading = cOptions.m_cReading;
    cApp.add_option("PICTURE", cList.m_aInputs, "Files, and folders with -r")->option_text(" ");
    cApp.add_flag("-r,--recursive", cList.m_bRecursive, "Take the pictures in folders and the folders below them");
    cApp.add_option("--endings", cTexts.m_sEndings,
                    "Endings of the files that -r takes, such as bmp,png; '*' takes all. By default those of the "
                    "formats that can be read, and wsq with --decoder")
        ->option_text("LIST");
    cApp.add_option("--files-from", cList.m_sListFile,
                    "Take the names in the file F, too, one a line; '-' is standard input")
        ->option_text("F");
    cApp.add_flag("-0,--null", cList.m_bNullSeparated, "The names in that list end with a zero byte");
    cApp.add_option("--shard", cTexts.m_sShard,
                    "Take every Nth picture of the list, beginning with the Ith: N runs with I from 1 to N share the "
                    "list among them")
        ->option_text("I/N");
    cApp.add_option("--ppi", cReading.m_dPpi, "Pixels per inch of all pictures, whatever the files tell")
        ->option_text("N")
        ->check(CLI::Range(1.0, dMostPpi));
    cApp.add_option("--decoder", cReading.m_sDecoder,
                    "Command for files of other formats, such as WSQ: the shell runs it with the file's name as $1, "
                    "and it writes a PGM picture to its standard output")
        ->option_text("CMD");
    cReading.m_dDecoderSeconds = 30.0;
    cApp.add_option("--decoder-timeout", cReading.m_dDecoderSeconds, "Seconds that it may take, by default 30")
        ->option_text("S")
        ->check(CLI::Range(0.001, dMostSeconds));
    for (CLI::Option* pOption : cApp.get_options())
    {
        if (pOption->get_group() == "Options") pOption->group("Input");
    }
}

void AddOutputOptions(CLI::App& cApp, ClOptions& cOptions, ClTexts& cTexts)
{
    constexpr const char* szGroup = "Output";
    cApp.add_option("--format", cTexts.m_sRecords, "Results as text (the default), json (an object a line) or csv")
        ->option_text("FORMAT")
        ->check(CLI::IsMember({"text", "json", "csv"}))
        ->group(szGroup);
    cApp.add_option("--output", cOptions.m_sOutput, "Write the results to FILE instead of standard output")
        ->option_text("FILE")
        ->group(szGroup);
    cApp.add_flag("--resume", cOptions.m_bResume,
                  "Go on behind the results that are in that file, with the same list and options: what is whole there "
                  "stays, and the file ends as if no run had been interrupted. For json and csv")
        ->group(szGroup);
    cApp.add_option(
            "-o,--out-dir", cOptions.m_sFolder,
            "Write the picture of each finger into DIR as NAME_CODE.png: NAME is the input's without its ending, "
            "CODE the finger position. Several undecided ones of a picture are NAME_0-1.png, NAME_0-2.png from "
            "the left. No file of another picture is overwritten")
        ->option_text("DIR")
        ->group(szGroup);
    cApp.add_option("--image-format", cTexts.m_sImageFormat,
                    HAVE_PNG != 0 ? "png (the default) or bmp" : "bmp; this program was built without png")
        ->option_text("FORMAT")
        ->check(HAVE_PNG != 0 ? CLI::IsMember({"png", "bmp"}) : CLI::IsMember({"bmp"}))
        ->group(szGroup);
    cApp.add_flag("--overlay", cOptions.m_bOverlay,
                  "Write each picture with frames around its fingers into DIR, too, as NAME_overlay.png")
        ->group(szGroup);
    cApp.add_option("--report", cOptions.m_sReport,
                    "Write a page of all pictures with their frames and outcomes, to be scrolled through, sorted and "
                    "filtered in a browser. Until it is whole it is FILE.part")
        ->option_text("FILE.html")
        ->group(szGroup);
    cApp.add_flag("--tree", cOptions.m_bTree,
                  "Repeat the inputs' folders below DIR, so that pictures of one name in several folders stay apart")
        ->group(szGroup);
}

void AddRunOptions(CLI::App& cApp, ClOptions& cOptions)
{
    constexpr const char* szGroup = "Run";
    cApp.add_flag("--biggest", cOptions.m_bBiggest,
                  "Cut out the biggest connected object of each picture, whatever it is, instead of fingers")
        ->group(szGroup);
    cApp.add_option("--expect", cOptions.m_nExpect, "A picture with fewer than N fingers counts as one with too few")
        ->option_text("N")
        ->check(CLI::Range(1, 4))
        ->group(szGroup);
    cOptions.m_nJobs = AvailableProcessors();
    cApp.add_option("-j,--jobs", cOptions.m_nJobs,
                    "Threads, by default one for each processor. Results come in the order of the list, whatever N is")
        ->option_text("N")
        ->check(CLI::Range(1, nMostJobs))
        ->group(szGroup);
    cApp.add_flag("-q,--quiet", cOptions.m_bQuiet, "No messages but those that end the run, and no progress bar")
        ->group(szGroup);
}

// Lines of the help that fit into 80 columns, between words.
std::string Wrapped(const std::string& sText)
{
    std::string sOut;
    std::size_t nColumn = 0;
    for (std::size_t nFirst = 0; nFirst < sText.size();)
    {
        const std::size_t nEnd = std::min(sText.find(' ', nFirst), sText.size());
        if (nColumn != 0)
        {
            const bool bFits = nColumn + 1 + (nEnd - nFirst) <= nHelpText;
            sOut += bFits ? ' ' : '\n';
            nColumn = bFits ? nColumn + 1 : 0;
        }
        sOut += sText.substr(nFirst, nEnd - nFirst);
        nColumn += nEnd - nFirst;
        nFirst = nEnd + 1;
    }
    return sOut;
}

// What no single option can tell.
void CheckTogether(const ClOptions& cOptions)
{
    const auto Demand = [](bool bHolds, const char* szText)
    {
        if (!bHolds) throw CLI::ValidationError(szText);
    };
    Demand(!cOptions.m_cList.m_aInputs.empty() || !cOptions.m_cList.m_sListFile.empty(),
           "Name a picture, or a list of pictures with --files-from");
    Demand(!std::isnan(cOptions.m_cReading.m_dPpi), "--ppi is no number");
    Demand(!std::isnan(cOptions.m_cReading.m_dDecoderSeconds), "--decoder-timeout is no number");
    Demand(cOptions.m_nExpect == 0 || !cOptions.m_bBiggest, "--expect counts fingers, and --biggest looks for none");
    Demand(!cOptions.m_cList.m_bNullSeparated || !cOptions.m_cList.m_sListFile.empty(), "--null needs --files-from");
    Demand(!cOptions.m_bResume || !cOptions.m_sOutput.empty(), "--resume needs the file of results, --output FILE");
    Demand(!cOptions.m_bResume || cOptions.m_eRecords != ERecords::eText, "--resume needs --format json or csv");
    Demand(cOptions.m_sReport.empty() || cOptions.m_sReport != cOptions.m_sOutput,
           "--report and --output name the same file");
    Demand(!cOptions.m_bOverlay || !cOptions.m_sFolder.empty(), "--overlay needs a folder, -o DIR");
    Demand(!cOptions.m_bTree || !cOptions.m_sFolder.empty(), "--tree needs a folder, -o DIR");
    for (const std::string& sInput : cOptions.m_cList.m_aInputs) Demand(!sInput.empty(), "An empty name is no picture");
}

void TakeTexts(const ClTexts& cTexts, ClOptions& cOptions)
{
    if (!cTexts.m_sShard.empty()) ParseShard(cTexts.m_sShard, cOptions.m_cList);
    cOptions.m_cList.m_aEndings = cTexts.m_sEndings.empty() ? DefaultEndings(!cOptions.m_cReading.m_sDecoder.empty())
                                                            : SplitEndings(cTexts.m_sEndings);
    cOptions.m_eRecords = cTexts.m_sRecords == "json"  ? ERecords::eJson
                          : cTexts.m_sRecords == "csv" ? ERecords::eCsv
                                                       : ERecords::eText;
    cOptions.m_eImageFormat = cTexts.m_sImageFormat == "bmp" ? EImageFormat::eBmp : EImageFormat::ePng;
}
} // namespace

ClCommand ParseCommandLine(int nArguments, const char* const* aszArguments)
{
    ClCommand cCommand;
    ClTexts cTexts;
    CLI::App cApp(szDescription, "kormelin-segment");
    cApp.footer(szFooter);
    AddInputOptions(cApp, cCommand.m_cOptions, cTexts);
    AddOutputOptions(cApp, cCommand.m_cOptions, cTexts);
    AddRunOptions(cApp, cCommand.m_cOptions);
    cApp.set_help_flag("-h,--help", "Print this help and end")->group("Other");
    cApp.set_version_flag("--version", VersionText(), "Print the version and end")->group("Other");
    cApp.get_formatter()->column_width(nHelpNames);
    for (CLI::Option* pOption : cApp.get_options()) pOption->description(Wrapped(pOption->get_description()));
    try
    {
        cApp.parse(nArguments, aszArguments);
        TakeTexts(cTexts, cCommand.m_cOptions);
        CheckTogether(cCommand.m_cOptions);
        cCommand.m_bRun = true;
    }
    catch (const CLI::CallForHelp&)
    {
        cCommand.m_sOut = cApp.help();
    }
    catch (const CLI::CallForVersion& cVersion)
    {
        cCommand.m_sOut = std::string(cVersion.what()) + '\n';
    }
    catch (const CLI::ParseError& cError)
    {
        cCommand.m_sErrors =
            std::string("kormelin-segment: ") + cError.what() + "\nkormelin-segment --help tells what there is.\n";
    }
    return cCommand;
}

std::string VersionText()
{
    return "kormelin-segment " KS_VERSION_TEXT "\nReads " + ReadableFormats() + '.';
}
} // namespace SegmentTool
