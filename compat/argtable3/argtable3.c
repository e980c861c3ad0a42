#define _POSIX_C_SOURCE 200809L /* <regex.h> in strict C11 */

#include "argtable3.h"

#include <ctype.h>
#include <regex.h>
#include <stdbool.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

/* Difference 1: the glossary. */

enum { kSyntaxWidth = 25, kTextColumn = 28, kTextWidth = 52 };

/* Prints for example "-a, -b"; like the two below, returns the columns used. */
static int PrintShortTags(FILE* fp, const char* tags) {
  int width = 0;
  for (const char* tag = tags; tag && *tag; ++tag) {
    width += fprintf(fp, "%s-%c", tag == tags ? "" : ", ", *tag);
  }
  return width;
}

static int PrintLongTags(FILE* fp, const char* tags) {
  int width = 0;
  for (const char* tag = tags; tag && *tag;) {
    const int length = (int)strcspn(tag, ",");
    width += fprintf(fp, "%s--%.*s", tag == tags ? "" : ", ", length, tag);
    tag += length;
    tag += *tag == ',';
  }
  return width;
}

/* Prints for example "-d, --device=<n>", or "    --loop" so that long options stand in one column.
 * Written straight to the file, so that no syntax is too long for a buffer. */
static int PrintSyntax(FILE* fp, const struct arg_hdr* hdr) {
  int width = PrintShortTags(fp, hdr->shortopts);
  if (hdr->longopts) width += fprintf(fp, "%s", hdr->shortopts ? ", " : "    ");
  width += PrintLongTags(fp, hdr->longopts);
  if (!hdr->datatype) return width;

  const char* joint = hdr->longopts ? "=" : hdr->shortopts ? " " : "";
  const bool optional = hdr->flag & ARG_HASOPTVALUE;
  return width +
         fprintf(fp, "%s%s%s%s", joint, optional ? "[" : "", hdr->datatype, optional ? "]" : "");
}

static bool IsSpace(char c) {
  return isspace((unsigned char)c);
}

/* Length of the first line of `text`, which does not begin with a blank. The caller ends the line
 * at a newline, if that comes earlier. */
static size_t LineLength(const char* text) {
  const size_t remaining = strlen(text);
  if (remaining <= kTextWidth) return remaining;
  size_t end = kTextWidth;
  while (end > 0 && !IsSpace(text[end])) --end;
  if (end == 0) return kTextWidth;
  while (end > 0 && IsSpace(text[end])) --end;
  return end + 1;
}

static void PrintWrapped(FILE* fp, const char* text) {
  for (int indent = 0; *text; indent = kTextColumn) {
    while (IsSpace(*text) && *text != '\n') ++text;
    const size_t length = LineLength(text);
    const char* newline = memchr(text, '\n', length);
    const char* end = newline ? newline : text + length;
    fprintf(fp, "%*s%.*s\n", indent, "", (int)(end - text), text);
    text = newline ? newline + 1 : end;
  }
}

void arg_print_glossary_gnu(FILE* fp, void** argtable) {
  struct arg_hdr** entry = (struct arg_hdr**)argtable;
  for (; !((*entry)->flag & ARG_TERMINATOR); ++entry) {
    if (!(*entry)->glossary) continue;
    fputs("  ", fp);
    const int width = PrintSyntax(fp, *entry);
    if (width <= kSyntaxWidth) {
      fprintf(fp, "%*s ", kSyntaxWidth - width, "");
    } else {
      fprintf(fp, " \n%*s", kTextColumn, "");
    }
    PrintWrapped(fp, (*entry)->glossary);
  }
  fputc('\n', fp);
}

/* Difference 2: pattern parameters. */

struct PatternArg {
  struct arg_rex rex; /* first: arg_parse() sees the object as its header */
  const char* pattern;
  int flags;
  const char* values[];
};

enum { kTooFew = 1, kTooMany, kNoMatch };

static void Reset(void* parent) {
  ((struct arg_rex*)parent)->count = 0;
}

static bool IsListOfWords(const char* pattern) {
  return strpbrk(pattern, ".[](){}*+?\\") == NULL;
}

/* Most patterns are words, as in "^on|off$", and compiling one costs more than the rest of a run.
 * As the whole value must match, the anchors at the ends of a word change nothing. */
static bool MatchesWord(const char* words, bool ignore_case, const char* value) {
  const size_t value_length = strlen(value);
  for (const char* word = words;; ++word) {
    size_t length = strcspn(word, "|");
    const char* end = word + length;
    if (*word == '^') ++word, --length;
    if (length > 0 && word[length - 1] == '$') --length;
    const bool same =
        length == value_length && (ignore_case ? strncasecmp : strncmp)(word, value, length) == 0;
    if (same) return true;
    if (*end == '\0') return false;
    word = end;
  }
}

/* POSIX reports the longest of the leftmost matches: if a match spans the whole value, it is that
 * one. */
static bool MatchesWhole(const struct PatternArg* arg, const char* value) {
  const bool ignore_case = (arg->flags & ARG_REX_ICASE) != 0;
  if (IsListOfWords(arg->pattern)) return MatchesWord(arg->pattern, ignore_case, value);
  regex_t regex;
  const int flags = ignore_case ? REG_EXTENDED | REG_ICASE : REG_EXTENDED;
  if (regcomp(&regex, arg->pattern, flags) != 0) return false;
  regmatch_t match;
  const bool matched = regexec(&regex, value, 1, &match, 0) == 0;
  regfree(&regex);
  return matched && match.rm_so == 0 && value[match.rm_eo] == '\0';
}

/* `value` is null when an optional value was left out. */
static int Scan(void* parent, const char* value) {
  struct PatternArg* arg = parent;
  if (arg->rex.count == arg->rex.hdr.maxcount) return kTooMany;
  if (value && !MatchesWhole(arg, value)) return kNoMatch;
  if (value) arg->values[arg->rex.count] = value;
  ++arg->rex.count;
  return 0;
}

static int Check(void* parent) {
  const struct arg_rex* rex = parent;
  return rex->count < rex->hdr.mincount ? kTooFew : 0;
}

static void PrintError(void* parent, FILE* fp, int error, const char* value, const char* program) {
  const struct arg_hdr* hdr = parent;
  if (error == kTooFew) {
    fprintf(fp, "%s: missing option ", program);
  } else if (error == kTooMany) {
    fprintf(fp, "%s: excess option ", program);
  } else {
    fprintf(fp, "%s: illegal value \"%s\" for option ", program, value ? value : "");
  }
  arg_print_option(fp, hdr->shortopts, hdr->longopts, hdr->datatype, "\n");
}

struct arg_rex* arg_rexn(const char* shortopts, const char* longopts, const char* pattern,
                         const char* datatype, int mincount, int maxcount, int flags,
                         const char* glossary) {
  const int room = maxcount < mincount ? mincount : maxcount;
  struct PatternArg* arg = malloc(sizeof *arg + (size_t)room * sizeof arg->values[0]);
  if (!arg) return NULL;
  arg->rex.hdr = (struct arg_hdr){.flag = ARG_HASVALUE,
                                  .shortopts = shortopts,
                                  .longopts = longopts,
                                  .datatype = datatype ? datatype : pattern,
                                  .glossary = glossary,
                                  .mincount = mincount,
                                  .maxcount = room,
                                  .parent = arg,
                                  .resetfn = Reset,
                                  .scanfn = Scan,
                                  .checkfn = Check,
                                  .errorfn = PrintError};
  arg->rex.count = 0;
  arg->rex.sval = arg->values;
  arg->pattern = pattern;
  arg->flags = flags;
  for (int i = 0; i < room; ++i) arg->values[i] = "";
  return &arg->rex;
}

struct arg_rex* arg_rex0(const char* shortopts, const char* longopts, const char* pattern,
                         const char* datatype, int flags, const char* glossary) {
  return arg_rexn(shortopts, longopts, pattern, datatype, 0, 1, flags, glossary);
}

struct arg_rex* arg_rex1(const char* shortopts, const char* longopts, const char* pattern,
                         const char* datatype, int flags, const char* glossary) {
  return arg_rexn(shortopts, longopts, pattern, datatype, 1, 1, flags, glossary);
}
