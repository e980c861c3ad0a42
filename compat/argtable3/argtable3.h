/*
 * The interface of argtable3 over argtable 2.13, for systems that package only the latter.
 *
 * Everything is argtable 2.13's own (see its documentation) except two things that argtable3 does
 * differently. Their names are redirected before the declarations are read, so <argtable2.h> must
 * be included only through this header.
 *
 * 1. arg_print_glossary_gnu(fp, argtable): 2.13 wraps at 51 columns, cuts inside words and shows a
 *    newline at the end as an empty line.
 *    Writes to `fp`, for each entry with a glossary, "  %-25s " with the option syntax and then the
 *    glossary in columns 28 to 79, wrapped at white space, later lines indented by 28 blanks;
 *    finally an empty line. A syntax over 25 characters has a line of its own. Only a word over 52
 *    characters is cut. A newline in a glossary ends its line; an empty glossary prints no newline.
 *    Texts may be of any length.
 *
 * 2. arg_rex0, arg_rex1, arg_rexn: 2.13 accepts a match anywhere in the value, and reads `flags` as
 *    those of regcomp().
 *    `pattern` (not null) is a POSIX extended regular expression that must match the whole value.
 *    `flags` is ARG_REX_ICASE or 0; other bits have no effect. The pattern is compiled when a value
 *    is scanned, not before; one that does not compile refuses every value. `datatype` null
 *    shows the pattern instead. All texts are referenced, not copied, and must outlive the object;
 *    after arg_parse(), `sval` points into argv. The object is one block that the caller owns
 *    (arg_freetable() or free()); null when memory runs out.
 */
#ifndef COMPAT_ARGTABLE3_H_
#define COMPAT_ARGTABLE3_H_

#ifdef ARGTABLE2
#error "include <argtable3.h> instead of <argtable2.h>"
#endif

#define arg_print_glossary_gnu argtable3_print_glossary_gnu
#define arg_rex0 argtable3_rex0
#define arg_rex1 argtable3_rex1
#define arg_rexn argtable3_rexn

#include <argtable2.h>

enum { ARG_REX_ICASE = 1 }; /* arg_rex flag: upper and lower case match each other */

#endif /* COMPAT_ARGTABLE3_H_ */
