#include "shotlight/help.h"

namespace shotlight {

const char generalHelp[] =
    R"(shotlight: searches files by their metadata, through the plug-in's classes.

usage: shotlight COMMAND ...
       shotlight COMMAND --help
       shotlight --version [--plugin FILE]

  find     search for files, once or live
  attrs    all that is known about files
  schema   what the attributes are: name, type, description
  keys     the keys of all attributes
  program  run a program of the host language
  store    what is kept of the contents of files
  window   open the system's search window

Every command takes (store only --help)
  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print the command's help
An option's value may also be joined to it: --limit=10.

--version prints the versions of this program and of the plug-in, and which
commit the program was built from, if that is known. An ELF library of the
plug-in has no version.

examples:
  shotlight find 'kMDItemFSName == "*.txt"c'
  shotlight attrs /etc/passwd
  shotlight schema kMDItemTitle

Results go to standard output; counts, times, progress and errors to standard
error. The exit status is 0 when something was found, 1 when nothing was, 2
after an error, 3 when something could not be read, found or not, and 129, 130
or 143 when find, attrs or program was interrupted before its end.
)";

const char findHelp[] =
    R"(shotlight find: searches for files, once or live.

usage: shotlight find QUERY|WORD... [--in FOLDER]... [--scope NAME,...]
                      [--within QUERY] [--exclude GLOB]... [--depth N]
                      [--one-file-system] [--no-hidden]
                      [--show KEY,...] [--sort KEY[:desc],...] [--limit N]
                      [--json | --jsonl | -0] [--color WHEN]
       shotlight find QUERY ... --count
       shotlight find QUERY ... --values KEY
       shotlight find QUERY ... --live [--for SECONDS]
       shotlight find QUERY ... --explain

where to look (default: in the current folder)
  --in FOLDER     this folder and all below it; may be given several times
  --scope NAME,...
                  home, computer, network, all, computer-indexed or
                  network-indexed; beside the folders, if there are any.
                  HOME tells which folder is home.
  --within QUERY  only among what this query matches
  --exclude GLOB  not at what has this name, nor at anything in it if it is a
                  folder; may be given several times. With a slash in it, GLOB
                  is for the path below the folder that is searched, with one at
                  its beginning for the whole path, with one at its end for
                  folders only. ** stands for any number of folders.
  --depth N       not further than N folders down: with 1, at what is in the
                  folder itself
  --one-file-system
                  not at what is in folders where another disk is mounted
  --no-hidden     not at what has a name that begins with a dot, nor at what is
                  in such folders

what to print
  --show KEY,...  the columns; see shotlight keys
                  (default: kMDItemDisplayName,kMDItemFSSize,kMDItemPath)
  --sort KEY,...  sort by the first key, then by the next; KEY:desc reverses
  --limit N       the first N results only
  --json          an array with an object for each result: the values of the
                  columns by their keys
  --jsonl         the same objects, one a line
  -0, --print0    each value as it is, ended by a zero byte, for xargs -0
                  (default columns: kMDItemPath alone)
  --color WHEN    names and paths in the colours of ls (see LS_COLORS): always,
                  never, or auto (on a terminal that isn't dumb, unless NO_COLOR
                  is set; the default)
  --count         only how many results there are
  --values KEY    the values of this attribute, each with how many results
                  have it
  --live          go on as files change: + and the path of each result, then
                  + path of a new one, ~ of a changed one, - of one that is
                  gone, until Ctrl-C
  --for SECONDS   end --live after that time
  --explain       the query, also the one that is made of words, and where it
                  would be looked; nothing is searched

  --no-store      read what is in files anew, and keep nothing; see
                  shotlight store --help
  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text

A query compares metadata attributes: KEY == "text", KEY > number, joined by
&&, || and parentheses. In text, * stands for any characters and ? for one; the
letters c, d and w after it ignore case, ignore accents and match whole words.
Dates are $time.today(-7) and the like, or written as they are printed. Keys
that no file has, and values that don't suit their keys, are warned of.

What has none of = < > && || InRange( in it is words: files are found that have
each of them in their display names, or in what is in them at the beginning of a
word, whatever the case and the accents. A word with * in it is a pattern for
the whole name.

examples:
  shotlight find 'kMDItemFSName == "*.txt"c'
  shotlight find 'kMDItemFSSize > 1000000' --in ~/Documents --in ~/Downloads
  shotlight find 'kMDItemDisplayName == "cafe*"cd' --show kMDItemPath
  shotlight find cafe menu
  shotlight find 'InRange(kMDItemFSSize, 1, 100) && kMDItemFSInvisible == false'
  shotlight find 'kMDItemFSSize > 0' --sort kMDItemFSSize:desc --limit 1
  shotlight find 'kMDItemFSSize > 60' --exclude node_modules --exclude '*.pdf'
  shotlight find 'kMDItemFSName == "*.txt"c' -0 | xargs -0 ls -l

Results are an aligned table on a terminal, cut to its width, with an ellipsis
where something is missing; otherwise they are one line each, with tabs between
the columns, whole. In both, a text with tabs, newlines or other control
characters in it (or $' at its start, or what turns the direction of writing) is
printed as $'a\tb\033', which shells take for the text; on a terminal, so is one
that is no UTF-8 or has a space at an end. Programs are given the bytes of those
as they are, but for bytes from \200 to \237, which terminals obey. Several
values of one attribute are joined by commas; one of them that has a comma or a
quote stands in double quotes, with those in it doubled. Dates are in GMT.
Unless they are to be sorted, results are printed as they are found; a table
every second.

In JSON, lists are arrays, dates strings like "2011-03-05T06:42:10Z", bytes
strings of hexadecimal digits, and what is not there is null.

The exit status is 0 when there are results, 1 when there are none, 2 after an
error, and 129, 130 or 143 when the search was interrupted before its end. It is
3 when results may be missing: a folder can't be read, or what the query asks of
a file can't, or its text is longer than what is searched. Standard error names
the first five of each and counts the others; the results that are there stand.
)";

const char attrsHelp[] =
    R"(shotlight attrs: prints all that is known about files.

usage: shotlight attrs FILE... [--keys KEY,...] [--json] [--no-store]

  --keys KEY,...  these attributes only, in this order; see shotlight keys
  --json          an array with one object a file: "path", and "attributes" by
                  their keys
  --no-store      read what is in the files anew, and keep nothing; see
                  shotlight store --help
  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text

Each attribute is a line, KEY = VALUE; the values of a list or a dictionary
follow, indented. Text is in quotes, with \", \\, \t, \n, \x1B and \u0085 for
what can't stand for itself, and \xFF for a byte of a name that is no UTF-8;
dates are in GMT; bytes are hexadecimal digits in < >. Of an attribute asked for
by --keys that a file lacks, the value is (none). Several files come each under
its path.

In JSON, a byte of a name that is no UTF-8 is a lone surrogate, \udc80 to
\udcff, dates are strings like "2011-03-05T06:42:10Z", bytes are strings of
hexadecimal digits, and what is not there, or is no number, is null.

A file that can't be shown is named on standard error, the others are shown, and
the exit status is 2. One that can't be read is shown as far as it is known, and
the exit status is 3; the first five of them are named at the end, the others
counted. Otherwise it is 0, or 129, 130 or 143 when attrs was interrupted.
)";

const char schemaHelp[] =
    R"(shotlight schema: tells what the attributes are.

usage: shotlight schema [KEY...]

Without keys, of all attributes that the system knows. Prints the key, the type
of its value, "several" for an attribute that may have several values, the name
and the description for people: an aligned table on a terminal, cut to its
width, otherwise one line each with tabs between the columns, whole.

  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text
)";

const char keysHelp[] =
    R"(shotlight keys: prints the keys of all attributes that the plug-in names.

usage: shotlight keys

  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --help          print this text
)";

const char programHelp[] =
    R"(shotlight program: runs a program of the host language.

usage: shotlight program [--plugin FILE] [--no-store] FILE [ARGUMENT...]

The statements outside of Sub, Function and Class are run in their order.
args() As String holds the ARGUMENTs, the first at 0. The whole program is
checked before any of it runs. Events come during App.DoEvents(milliseconds),
and during Execute and Stop of a query.

  --no-store      read what is in files anew, and keep nothing; see
                  shotlight store --help
  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text

Options stand before FILE; what follows it is the program's. (Where --help is,
too, -- stands before FILE.) Print writes one line to standard output. The exit
status is 0, or what Quit says; 2 when the program has a mistake or nobody
catches an exception: standard error then tells which, and where. Ctrl-C ends it
with status 130.

example:
  shotlight program first-query.txt ~/Documents

docs/host-programs.md lists what is taken of the language; examples/programs has
programs to copy from. Both are in share/doc/shotlight when it is installed.
)";

const char storeHelp[] =
    R"(shotlight store: tells what is kept of the contents of files.

usage: shotlight store [--clear | --check]

What photos, songs, films and documents say of themselves, and the text of
documents, takes long to read. It is read once, and kept in a database, until
the file changes. Without an option, prints where that is, its size, of how many
files it knows something, and how often that saved reading one.

  --clear         remove the database; what is needed is read again
  --check         look at every entry; the exit status is 2 when one is damaged
  --help          print this text

The database is $XDG_CACHE_HOME/shotlight/content.sqlite; without that variable,
it is in ~/.cache. Nobody else may read it. What was used longest ago makes room
when it gets too large, and whatever is wrong with it, results are the same.
With --no-store, find, attrs and program leave it alone.
)";

const char windowHelp[] =
    R"(shotlight window: opens the system's search window.

usage: shotlight window TEXT

There is no window here: prints the text that it would show.

  --plugin FILE   load this plug-in, a Mach-O dylib or an ELF library
                  (default: the dylib that was built with this program)
  --              what follows is no option, whatever it starts with
  --help          print this text
)";

}  // namespace shotlight
