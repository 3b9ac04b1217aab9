#include "hosts/cli/texts/examples.h"

#include <map>

namespace vtdirect_cli {
namespace {

using Table = std::map<std::string_view, std::vector<const char*>>;

[[nodiscard]] Table ReadingExamples() {
  return {
      {"check", {"vtdirect check plm", "vtdirect --json check https://plm.example/vt"}},
      {"doctor", {"vtdirect doctor plm", "vtdirect --json doctor"}},
      {"ls", {"vtdirect ls", "vtdirect ls -l '//plm/Products/Trekking Bike/Folders/Frame/'"}},
      {"tree",
       {"vtdirect tree '//plm/Products/Trekking Bike/'",
        "vtdirect tree --full-paths --depth 3 //plm/Products/ | sort"}},
      {"find",
       {"vtdirect find '//plm/Products/Trekking Bike/Folders/' --name '*.lxz' --newer A.2",
        "vtdirect find '//plm/Products/Trekking Bike/Folders/' --number '00001*'",
        "vtdirect find '//plm/Products/Trekking Bike/Folders/Frame/' --mine"}},
      {"info",
       {"vtdirect info '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json info '//plm/?id=D1001'"}},
      {"status",
       {"vtdirect status '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect status '//plm/?id=D1001' '//plm/?id=D1002'",
        "vtdirect status -r '//plm/Products/Trekking Bike/Folders/' --sort status"}},
      {"versions",
       {"vtdirect versions '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json versions '//plm/?id=D1001'"}},
      {"uid",
       {"vtdirect uid '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect uid '//plm/?id=D1001'"}},
      {"path", {"vtdirect path '//plm/?id=D1001'", "vtdirect path --folder '//plm/?id=D1001'"}},
      {"url",
       {"vtdirect url '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json url '//plm/?id=D1001'"}},
      {"get",
       {"vtdirect get '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect get '//plm/Products/Trekking Bike/Folders/Frame/*.lxz'",
        "vtdirect get -r '//plm/Products/Trekking Bike/Folders/' -o bike --parallel 8"}},
      {"links", {"vtdirect links '//plm/?id=D1001'", "vtdirect --json links '//plm/?id=D1002'"}},
      {"browse-url",
       {"vtdirect browse-url '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json browse-url '//plm/?id=D1001'"}},
      {"open",
       {"vtdirect open '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "BROWSER=lynx vtdirect open '//plm/?id=D1001'"}},
      {"servers", {"vtdirect servers", "vtdirect -s test=http://127.0.0.1:8080/ servers"}},
      {"login", {"vtdirect login plm", "vtdirect login plm --token"}},
      {"support-bundle",
       {"vtdirect support-bundle support.tar.gz", "vtdirect --quiet support-bundle /tmp/support.tar.gz"}},
  };
}

[[nodiscard]] Table ChangingExamples() {
  return {
      {"checkout",
       {"vtdirect checkout '//plm/Products/Trekking Bike/Folders/Frame/f*' --dry-run",
        "vtdirect checkout '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect checkout '//plm/?id=D1002'"}},
      {"put",
       {"vtdirect put drawing.lxz '//plm/Products/Trekking Bike/Folders/Frame/'",
        "vtdirect put *.lxz '//plm/Products/Trekking Bike/Folders/Frame/' --if-changed",
        "vtdirect put -r bike/Folders/Frame '//plm/Products/Trekking Bike/Folders/Frame/' --if-changed"}},
      {"checkin",
       {"vtdirect checkin -r '//plm/Products/Trekking Bike/Folders/' --dry-run",
        "vtdirect checkin '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json checkin '//plm/?id=D1002'"}},
      {"edit",
       {"vtdirect edit '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "VISUAL='code --wait' vtdirect edit '//plm/?id=D1002'"}},
      {"undo",
       {"vtdirect undo '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect --json undo '//plm/?id=D1002'"}},
      {"verify",
       {"vtdirect verify '//plm/Products/Trekking Bike/Folders/Frame/fork.lxz'",
        "vtdirect verify --renew '//plm/?id=D1002'"}},
      {"checkouts", {"vtdirect checkouts", "vtdirect --json checkouts --on plm"}},
      {"recover", {"vtdirect recover", "vtdirect --json recover"}},
      {"edit-url",
       {"vtdirect edit-url '//plm/?id=D1026|W301'", "vtdirect --json edit-url '//plm/?id=D1026|W301'"}},
  };
}

// In a work folder that was cloned from the folder Frame.
[[nodiscard]] Table WorkFolderExamples() {
  return {
      {"clone",
       {"vtdirect clone '//plm/Products/Trekking Bike/Folders/Frame/' && cd Frame && vtdirect st",
        "vtdirect clone '//plm/Products/Trekking Bike/Folders/' bike"}},
      {"st", {"vtdirect st", "vtdirect st --all"}},
      {"pull", {"vtdirect pull --dry-run", "vtdirect pull"}},
      {"commit", {"vtdirect commit fork.lxz", "vtdirect commit"}},
      {"revert", {"vtdirect revert fork.lxz", "vtdirect --json revert fork.lxz"}},
      {"diff", {"vtdirect diff", "VTDIRECT_DIFF=cmp vtdirect diff fork.lxz"}},
      {"log", {"vtdirect log fork.lxz", "vtdirect --json log fork.lxz"}},
  };
}

[[nodiscard]] Table MountExamples() {
  return {
      {"mount", {"vtdirect mount //plm/ ~/plm", "vtdirect mount --write //plm/ ~/plm"}},
      {"refresh", {"vtdirect refresh ~/plm", "vtdirect --quiet refresh ~/plm"}},
      {"unmount", {"vtdirect unmount ~/plm", "vtdirect --quiet unmount ~/plm"}},
  };
}

[[nodiscard]] Table TranslationExamples() {
  return {
      {"xliff put",
       {"vtdirect xliff put '//plm/?id=D1028' manual.xlf --language en",
        "vtdirect --json xliff put '//plm/?id=D1028' manual.xlf --language en"}},
      {"xliff source",
       {"vtdirect xliff source '//plm/?id=D1028'", "vtdirect --json xliff source '//plm/?id=D1028'"}},
      {"xliff list",
       {"vtdirect xliff list '//plm/?id=D1028'", "vtdirect --json xliff list '//plm/?id=D1028'"}},
      {"xliff get",
       {"vtdirect xliff get '//plm/?id=D1028' --language de",
        "vtdirect xliff get '//plm/?id=D1028' --language de -o - | head"}},
      {"xliff publish",
       {"vtdirect xliff publish '//plm/?id=D1031'", "vtdirect --json xliff publish '//plm/?id=D1031'"}},
  };
}

[[nodiscard]] Table AllExamples() {
  Table all = ReadingExamples();
  all.merge(ChangingExamples());
  all.merge(WorkFolderExamples());
  all.merge(MountExamples());
  all.merge(TranslationExamples());
  return all;
}

}  // namespace

const std::vector<const char*>& ExamplesOf(std::string_view command) {
  static const Table table = AllExamples();
  static const std::vector<const char*> none;
  const auto found = table.find(command);
  return found == table.end() ? none : found->second;
}

}  // namespace vtdirect_cli
