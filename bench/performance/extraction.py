"""Text from documents: the program beside the tools that Debian has for each format."""

import shutil

import documents
import texts
from commands import Failed, Run, in_turn
from records import progress

# {} stands for the file, which comes last where it is not named.
TOOLS = {
    "docx": {"docx2txt": ["docx2txt", "{}", "-"], "pandoc": ["pandoc", "-f", "docx", "-t", "plain"]},
    "xlsx": {"xlsx2csv": ["xlsx2csv", "--all"],
             "ssconvert": ["ssconvert", "-T", "Gnumeric_stf:stf_csv", "{}", "fd://1"]},
    # Debian has no reader of presentations: what stands between the tags, in the order of the slides' names.
    "pptx": {"unzip+sed": ["sh", "-c", "unzip -p \"$0\" 'ppt/slides/*.xml' | sed 's/<[^>]*>/ /g'"]},
    "pdf": {"pdftotext": ["pdftotext", "{}", "-"]},
    "html": {"w3m": ["w3m", "-dump", "-T", "text/html"], "lynx": ["lynx", "-dump", "-force_html"],
             "pandoc": ["pandoc", "-f", "html", "-t", "plain"]},
}
LONGEST_SECONDS = 60.0
ENOUGH_SECONDS = 12.0


def measure(setting):
    for name, tools in TOOLS.items():
        installed = {tool: how for tool, how in tools.items() if shutil.which(how[0])}
        for tool in tools.keys() - installed.keys():
            setting.records.missing(f"text/{tool}/{name}", "is not installed")
        if setting.corpus:
            measure_corpus(setting, name, installed)
        for megabytes in (0.5, 1, 2) if setting.quick else (1, 2, 4, 8):
            measure_generated(setting, name, installed, megabytes)


def command(tool, path):
    return [str(path) if part == "{}" else part for part in tool] if "{}" in tool else [*tool, str(path)]


def measure_generated(setting, name, tools, megabytes):
    size = int(megabytes * 1_000_000)
    path = setting.data / "text" / f"{size}.{name}"
    if not path.exists():
        path.parent.mkdir(parents=True, exist_ok=True)
        documents.write(path, texts.Writer(f"{name} {megabytes}").paragraphs(size))

    def run(how):
        return lambda: setting.commands.run(command(how, path), LONGEST_SECONDS)

    ours = [setting.program, "text", "-j", "1"]
    in_turn({tool: run(how) for tool, how in {"morvaai": ours, **tools}.items()}, setting.rounds, ENOUGH_SECONDS,
            setting.records, "text", f"{name}/{megabytes}", bytes=size)


def measure_corpus(setting, name, tools):
    """All documents of a format that each tool takes: one process a file, and ours in one process as well."""
    ours = [setting.program, "text", "-j", "1"]
    paths = [path for path in sorted((setting.corpus / "documents" / name).glob("*")) if path.is_file()]
    taken = [path for path in paths
             if all(takes(setting, how, path) for how in {"morvaai": ours, **tools}.values())]
    progress(f"  {name}: {len(taken)} of {len(paths)} documents are taken by each tool")
    if not taken:
        return

    def one_by_one(how):
        return lambda: Run.sum([setting.commands.run(command(how, path), LONGEST_SECONDS) for path in taken])

    candidates = {tool: one_by_one(how) for tool, how in {"morvaai": ours, **tools}.items()}
    candidates["morvaai-at-once"] = lambda: setting.commands.run([*ours, *taken], LONGEST_SECONDS)
    in_turn(candidates, setting.rounds, ENOUGH_SECONDS, setting.records, "text",
            f"{name}/{len(taken)} documents", items=len(taken), bytes=sum(path.stat().st_size for path in taken))


def takes(setting, how, path):
    try:
        setting.commands.run(command(how, path), LONGEST_SECONDS)
        return True
    except Failed:
        return False
