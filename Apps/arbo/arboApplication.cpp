#include "arboApplication.h"

#include "arboCommands.h"
#include "arboError.h"

#include <CLI/CLI.hpp>

#include <ostream>

#ifndef LUMOARBO_VERSION
#define LUMOARBO_VERSION "unknown"
#endif

namespace arbo
{
namespace
{
const char * const footer = R"(Examples:
  arbo info portal.ves                 summary of a vessel tree
  arbo info portal.ves --json          the same for scripts
  arbo info liver.nii.gz               size, spacing, origin and value range of an image
  arbo convert old.ves new.ves         rewrite a tree in the canonical text form
  arbo convert portal.ves portal.vtp   centre lines for ParaView and other VTK tools
  arbo convert liver.nii.gz liver.nrrd convert an image, keeping its geometry
  arbo label portal.ves -o plan.ves --vessel 6 --select subtree --status resect
  arbo supply liver.nrrd portal.ves -o segments.nrrd   supply areas of the liver segments, with volumes
  arbo phantom --out phantom --size medium   synthetic liver, vessel masks and true trees
  arbo compare truth-portal.ves portal.ves  accuracy of a tree against the truth
  arbo extract portal-mask.nii.gz -o portal.ves --type portal   vessel tree from a segmentation
  arbo render portal.ves organ.nrrd -o tree.png --view iso   a picture of trees and organ
  arbo view portal.ves organ.nrrd      select and label vessels in a window, save the edited tree
  arbo resect liver.nrrd portal.ves --tumour tumour.nrrd --margin 0,5,10 -o risk.nrrd   risk analysis, FLR

Exit status: 0 success, 1 bad input or failed work (one line on stderr: "arbo: <file>: <what is wrong>"),
2 bad usage. Run "arbo <command> --help" for the options of a command.)";
}

int
runApplication(int argc, const char * const * argv, std::ostream & out, std::ostream & err)
{
  CLI::App app("LumoArbo: vessel trees, vascular territories and their volumes for liver surgery planning.", "arbo");
  app.footer(footer);
  app.set_version_flag("--version", std::string("arbo ") + LUMOARBO_VERSION);
  app.require_subcommand(1);
  app.fallthrough();

  Context context{ out, err, false, {}, 0 };
  context.arguments.assign(argv, argv + argc);
  app.add_flag("-q,--quiet", context.quiet, "Print no notes or progress on stderr (errors are still reported)");

  addInfoCommand(app, context);
  addConvertCommand(app, context);
  addLabelCommand(app, context);
  addSupplyCommand(app, context);
  addPhantomCommand(app, context);
  addCompareCommand(app, context);
  addExtractCommand(app, context);
  addRenderCommand(app, context);
  addViewCommand(app, context);
  addResectCommand(app, context);
  addSceneCommand(app, context);
  addSurfaceCommand(app, context);

  try
  {
    app.parse(argc, argv);
  }
  catch (const CLI::CallForHelp &)
  {
    out << app.help();
    return 0;
  }
  catch (const CLI::CallForAllHelp &)
  {
    out << app.help("", CLI::AppFormatMode::All);
    return 0;
  }
  catch (const CLI::CallForVersion &)
  {
    out << app.version() << "\n";
    return 0;
  }
  catch (const CLI::ParseError & e)
  {
    err << "arbo: " << e.what() << "\n";
    err << "Run \"arbo --help\" for usage.\n";
    return 2;
  }
  catch (const Error & e)
  {
    err << "arbo: " << (e.file().empty() ? std::string() : e.file() + ": ") << e.what() << "\n";
    return 1;
  }
  catch (const std::bad_alloc &)
  {
    err << "arbo: out of memory\n";
    return 1;
  }
  catch (const std::exception & e)
  {
    err << "arbo: " << e.what() << "\n";
    return 1;
  }
  return context.status;
}
} // namespace arbo
