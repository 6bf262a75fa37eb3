/* orli11.h - formula engine.
 *
 * Conventions
 * 1. A host creates a context (EC), declares functions, input items and keywords, and parses texts
 *    into expressions (HEXP), which the context owns.
 * 2. Texts are zero-terminated bytes in the active code page (WRENSetCodePage). What a host passes
 *    in is copied; nothing of it is kept.
 * 3. Offsets and lengths in texts are bytes; offsets start at 0.
 * 4. A result of "1 or 0" is int32_t: 1 for success or yes. An EC or HEXP must be valid; a null one
 *    returns 0, -1 or null where its routine says so.
 * 5. A failure leaves the context as it was, unless the routine says otherwise.
 * 6. Different threads may work on different contexts; one context belongs to one thread at a time.
 *    Host routines run on the caller's thread, inside the engine's call, and must not change the
 *    context that is being evaluated, walked or read into, unless its type says so. An exception
 *    that one of them throws ends there, as if it had returned 0 or null.
 */
#ifndef ORLI11_H
#define ORLI11_H

#include <stdint.h>

#include "wreni11.h"

#if defined(__GNUC__)
#define ORL_API __attribute__((visibility("default")))
#else
#define ORL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Version --------------------------------------------------------------------------------- */

#define ORL_VERSION_MAJOR 1 /* incompatible changes */
#define ORL_VERSION_MINOR 0 /* additions */
#define ORL_VERSION_PATCH 0 /* fixes */

/* The version of the library: major << 16 | minor << 8 | patch. A host compares it with the macros,
 * which are those of the header that it was compiled with: hosts of the same major version that use
 * no additions later than the library's minor version work. */
ORL_API uint32_t ORLVersion(void);

/* ---- Types ----------------------------------------------------------------------------------- */

typedef struct ExprContext *EC;  /* a context */
typedef struct Expression *HEXP; /* a stored formula, range or set */

/* Data type codes. 3 to 255 are the host's own types, except that 4 and 5 have the meanings below
 * where a function or a parameter is declared; larger ones are types of keywords. */
enum {
  ORL_TYPE_NUMBER = 0,
  ORL_TYPE_DATE = 1,
  ORL_TYPE_STRING = 2,
  ORL_TYPE_FOLLOWS = 4, /* of a parameter or function: follows from other arguments */
  ORL_TYPE_ANY = 5      /* of a parameter: any type, and the star form is allowed */
};

/* Kinds of items. */
enum { ORL_FUNCTION = 0, ORL_INPUT = 1, ORL_FORMULA = 2, ORL_KEYWORD = 3 };

/* The bytes that separate the words of a formula in ORLRenameExpressionItem; a line feed and the
 * single quote are not among them, and text in double quotes is one word. */
#define ORL_WORD_DELIMITERS " \t\r()*+-/|%,"

/* `flags` of ORLCreateEC. */
enum {
  ORL_FLAG_LIST_ALL = 1,          /* the editor lists simple unnamed expressions too */
  ORL_FLAG_NO_CONCAT = 2,         /* no || on strings */
  ORL_FLAG_MODIFIERS = 4,         /* the words DISTINCT and ALL */
  ORL_FLAG_DATE_MINUS_STRING = 8, /* a Date minus a String is a Number */
  ORL_FLAG_STRING_PLUS = 16,      /* + on strings without an operator callback */
  ORL_FLAG_NO_DATE_UNITS = 32,    /* no unit words, no + and - on dates */
  ORL_FLAG_PERCENT = 64,          /* the operator % */
  ORL_FLAG_RANGES = 128           /* ranges and sets; dates are checked while scanning */
};

/* `itemFlags` of a function. */
enum {
  ORL_FUNC_MODIFIER = 1,                   /* accepts DISTINCT or ALL; 2 has the same meaning */
  ORL_FUNC_EXPRESSION = 4,                 /* a parameter by name also takes an expression */
  ORL_FUNC_EXPRESSION_UNLESS_DISTINCT = 8, /* the same in calls without DISTINCT */
  ORL_FUNC_NEEDS_DISTINCT = 16,            /* calls must contain DISTINCT */
  ORL_FUNC_ESCAPE = 32                     /* extended text marks its calls */
};

/* `convertFlags` of ORLSetDateConvert. */
enum {
  ORL_CONVERT_SETS_PLAIN = 1,   /* in Set mode the editor inserts dates as '%s', not by template */
  ORL_CONVERT_EXTENDED_TEXT = 2 /* the templates are for extended text: the editor inserts picked
                                   dates as they are */
};

/* Message ids of FormulaError: the error, and after the colon what the span covers. ORLErrorText
 * returns the messages for users. */
enum {
  ORL_ERR_TYPENUM = 100,         /* the right operand must be a Number: that operand */
  ORL_ERR_PARM = 101,            /* an argument by name must be an item: the argument */
  ORL_ERR_VAR = 102,             /* not an input item or keyword: the name */
  ORL_ERR_FUNC = 103,            /* not a function or formula: the name and its parenthesis */
  ORL_ERR_NUMPARMSHI = 105,      /* too many arguments: the function's name */
  ORL_ERR_GENERAL = 106,         /* a null argument, or the formula was destroyed: no span */
  ORL_ERR_NAME = 107,            /* the name of the formula is not valid: the whole text */
  ORL_ERR_INPUT = 108,           /* of ORLValidName, whatever its result: the name */
  ORL_ERR_SYNTAX = 109,          /* incomplete, or not a formula: the first wrong token */
  ORL_ERR_UNKNOWNCHAR = 110,     /* a byte that cannot begin an operand: the byte */
  ORL_ERR_OPERATORNUM = 111,     /* not an operator of Numbers: the operator */
  ORL_ERR_MAXTOKEN = 112,        /* a token of more than 2,046 bytes: the part that was read */
  ORL_ERR_OPERATORSTR = 113,     /* not an operator of Strings: the operator */
  ORL_ERR_OPERATORDATE = 114,    /* not an operator of Dates: the operator */
  ORL_ERR_TYPESTR = 115,         /* the right operand must be a String: that operand */
  ORL_ERR_TYPEDATE = 116,        /* not used */
  ORL_ERR_NUMPARMSLO = 117,      /* too few arguments: the function's name */
  ORL_ERR_PARMNUM = 118,         /* must be a Number: the argument */
  ORL_ERR_PARMSTR = 119,         /* must be a String: the argument */
  ORL_ERR_PARMDATE = 120,        /* must be a Date: the argument */
  ORL_ERR_MEMORY = 121,          /* out of memory, or a load beyond its work limit: no span */
  ORL_ERR_TOCOMPLEX = 122,       /* nested too deeply: the token that exceeds the limit */
  ORL_ERR_INVALIDDATE = 123,     /* not a date of the calendar: the date */
  ORL_ERR_EXPPARMS = 124,        /* a formula called with arguments: its name */
  ORL_ERR_RECURSIVE = 125,       /* the formula would refer to itself: the reference */
  ORL_ERR_DUPNAME = 126,         /* another formula or a function has the name: the whole text */
  ORL_ERR_EXPDATATYPE = 127,     /* formulas rely on its old type: the whole text */
  ORL_ERR_TYPENUMDATE = 128,     /* must be a Date or Number: the right operand */
  ORL_ERR_KEYWORD = 129,         /* a keyword, modifier or unit out of place: that word */
  ORL_ERR_MISKEYWORD = 130,      /* DISTINCT is required: the name, or the word ALL */
  ORL_ERR_MEMLOW = 131,          /* of the editor: no dialog could be opened */
  ORL_ERR_OPERATORKEYWORD = 132, /* not an operator of keywords: the operator */
  ORL_ERR_PARMKEYWORD = 133,     /* must be a keyword of that type: the argument */
  ORL_ERR_RANGETYPE = 134,       /* members of a set differ in type: the first other one */
  ORL_ERR_BETWEEN = 135,         /* both sides must have one type: the right side */
  ORL_ERR_IMBEDDEDRANGE = 136,   /* a range or set cannot be called: its name */
  ORL_ERR_SUBCLASS = 137         /* the item must have another subClass: the item */
};

/* An error in a formula text: the message id (0: none) and the span of bytes; offset and length are
 * 0 where no position is known. */
typedef struct {
  int32_t id, offset, length;
} FormulaError;

#pragma pack(push, 1)

/* One declared parameter of a function. */
typedef struct {
  uint16_t mode;     /* 0: by value, evaluated before the call; 1: by name */
  uint16_t dataType; /* the type that the argument must have; 4 and 5 take any */
  uint16_t subClass; /* not 0, mode 1: the subClass that the input item must have */
} ParamRecord;

/* The name of a routine. It is const in C++, so that it can be a literal. */
#ifdef __cplusplus
typedef const char *OrlRoutineName;
#else
typedef char *OrlRoutineName;
#endif

/* A function, an input item or a keyword, as the host declares it. The parameter records of a
 * function follow the record directly: see ORL_EXPR_ITEM_WITH. */
typedef struct {
  int16_t kind;               /* ORL_FUNCTION, ORL_INPUT or ORL_KEYWORD */
  int16_t dataType;           /* of a function: its result */
  OrlRoutineName routineName; /* may be null; the context keeps a copy */
  void *routine;      /* OrlFunctionProc or OrlValueProc; null: found by the context's lookup */
  char name[65];      /* as formulas write it, at most 64 bytes */
  int16_t paramCount; /* functions: parameter records; negative: written without parentheses, still
                         with one record */
  union {
    uint16_t firstOptional; /* functions */
    uint16_t subClass;      /* input items: a code that the host chooses */
    uint16_t resultType;    /* keywords: type of a call of type 4 whose first argument it is */
  };
  union {
    uint16_t optionalCount; /* functions */
    uint16_t caseSensitive; /* keywords: not 0 when case matters in the name */
  };
  uint16_t itemFlags; /* functions: ORL_FUNC_... */
} ExprItem;

/* An item with `count` parameter records, for a host to fill:
 *   ORL_EXPR_ITEM_WITH(2) row = {0};
 *   row.item.paramCount = 2; row.parameters[0].dataType = ORL_TYPE_DATE; ...
 *   ORLAddExpressionItem(ec, &row.item); */
#define ORL_EXPR_ITEM_WITH(count)  \
  struct {                         \
    ExprItem item;                 \
    ParamRecord parameters[count]; \
  }

#pragma pack(pop)

/* ---- Parameters by name and keywords --------------------------------------------------------- */

/* A parameter of mode 1 takes its argument by name: the argument must be a bare input item or
 * keyword, it is not evaluated, and the entry of `args` is its name as text. So a host can compute
 * over a whole column: Sum(Amount) passes "Amount" to the host's routine. A function with such a
 * parameter is called an aggregate (ORLIsItemAggregate). ORL_FUNC_EXPRESSION also accepts other
 * arguments; for one that has no name the entry is null. With a subClass in its record, the
 * parameter takes only input items that the host has given that subClass.
 *
 * A keyword is a word that formulas pass to functions and that has no value of its own, as in
 * Total(Amount, Monthly). Its type is a number above 255 that the host chooses, and a parameter of
 * that dataType accepts only keywords of that type; with mode 1 the routine receives the word. A
 * function of type ORL_TYPE_FOLLOWS whose first argument is a keyword has the keyword's
 * `resultType`. */

/* ---- Host routines --------------------------------------------------------------------------- */

/* All of them run on the thread that called the engine, inside that call. Strings and records that
 * they receive belong to the engine and are valid during the call. */

/* Returns the address of the host routine of that name, or null when there is none. The engine
 * casts it to the type that belongs to the use of the name. Called while items are added, operators
 * set and blocks read; it must not change the context. */
typedef void *(*OrlLookupProc)(const char *routineName);

/* Called when ORLParseFormula is about to rename an existing expression, after its checks and
 * before the change. The result is ignored. It may change the context: the checks are repeated
 * afterwards. */
typedef int32_t (*OrlRenameProc)(EC ec, const char *oldName, const char *newName);

/* Returns the value of the input item `name` in *value: a zeroed block of `size` bytes, 13 for a
 * NumberValue (Number, Date), 50 for a terminated text (String and other types). It may replace the
 * block by a larger one (ORLMemRealloc, FUNStrVarResult); the engine owns the block before and
 * after. Nonzero for success, 0 when there is no value. `exp` is the expression whose text contains
 * the item. It may call the engine, but not change the context. */
typedef int32_t (*OrlValueProc)(EC ec, HEXP exp, int32_t size, void **value, const char *name);

/* Computes a function into *result, a block like *value of OrlValueProc. `args` has one entry for
 * each declared parameter: the argument's value, its name where the parameter is by name, or null
 * for an argument that has no value or is missing. `args` is null for a call without an argument
 * list. The entries belong to the engine and are valid during the call; they are not blocks to be
 * resized or freed. Nonzero for success, 0 when there is no value. */
typedef int32_t (*OrlFunctionProc)(EC ec, HEXP exp, int32_t resultSize, void **result,
                                   const char *name, void **args);

/* Computes +, -, * or / on two Numbers in place of the built-in arithmetic, into *result. Operands
 * and result may be null values (length 0). All sizes are 13, `dataType` is the type of the
 * operation. The return value is ignored. Routines that are set for || and for other types are
 * never called: they only make the operator valid there, for extended text. */
typedef int32_t (*OrlOperatorProc)(EC ec, HEXP exp, int32_t dataType, int32_t leftSize,
                                   const NumberValue *left, int32_t rightSize,
                                   const NumberValue *right, int32_t resultSize,
                                   NumberValue *result);

/* Called by ORLEnumExpItems for each row. It must not add or delete rows of that kind. */
typedef void (*OrlEnumItemProc)(EC ec, const char *name, void *user);

/* Called by ORLEnumExpressions for each expression; 0 stops. It must not add or destroy
 * expressions. */
typedef int32_t (*OrlEnumExpressionProc)(EC ec, HEXP exp, int32_t ordinal);

/* Called to destroy, with ORLDestroyEXP, an expression that uses the item `row`. Returns nonzero
 * when it is destroyed, 0 to stop the delete. It may destroy other expressions as well. */
typedef int32_t (*OrlDeleteProc)(EC ec, HEXP exp, ExprItem *row);

/* Called before the editor deletes an expression for the user: nonzero permits, 0 refuses. `dialog`
 * is the editor's window, for the host's own questions. The routine may change the context; when it
 * has destroyed `exp` itself, the user is not asked. */
typedef int32_t (*OrlDelPermissionProc)(EC ec, HEXP exp, void *dialog);

/* Called with the formula that ended a load and its error: out of memory, or in blocks of the
 * versions 0 and 1 any error. `text` and `error` are valid during the call. It may query the
 * context and show windows, but not change the context. */
typedef void (*OrlErrorProc)(EC ec, const char *text, const FormulaError *error);

/* Passed to the editor by a dialog framework when the user requests help: a help command, 1 with a
 * page number or 257 with a keyword (const char *) as `data`. The result is ignored. It may show
 * windows and change the context. */
typedef int32_t (*OrlHelpProc)(int32_t command, intptr_t data);

/* Adds the values of the input item or keyword `name` to `list`, the list control of the values
 * dialog, each as a row of text, by the window system's operations (windows.h):
 *   ORLGetWindowSystem()->SendMessage(list, ORL_LB_ADDSTRING, 0, (intptr_t)text);
 * It may change the context. `first` is 1 for a new listing and 0 when the user wants more; the
 * list is never emptied by the engine. Sets *more to 0 when there are no more values.
 *
 * A String value that the user picks is inserted in quotes, with its own quotes doubled. Since \'
 * is a quote too in a formula, a backslash before a quote of the value is lost when the formula is
 * evaluated, and a value that ends with a backslash merges with the rest of the formula up to its
 * next quote, if there is one. */
typedef void (*OrlListValuesProc)(EC ec, const char *name, void *list, int32_t first,
                                  int32_t *more);

/* ---- Memory ---------------------------------------------------------------------------------- */

/* Memory blocks passed between engine and host. As the WRENMem routines, but ORLMemRealloc of a
 * null block returns null and allocates nothing. */
ORL_API void *ORLMemAlloc(uint32_t size);
ORL_API void *ORLMemRealloc(void *block, uint32_t size);
ORL_API void ORLMemFree(void *block);
ORL_API uint32_t ORLMemSize(const void *block);

/* ---- Context --------------------------------------------------------------------------------- */

/* A new context, or null when out of memory. `owner` is a window handle or null; `lookup` and
 * `rename` may be null; `flags` are ORL_FLAG_... */
ORL_API EC ORLCreateEC(void *owner, OrlLookupProc lookup, OrlRenameProc rename, uint16_t flags);
/* Frees a context with everything that it owns and calls no host routine; null is accepted. Returns
 * 1. */
ORL_API int32_t ORLDestroyEC(EC ec);
/* A new context with the items, settings and expressions of `ec`, or null when out of memory.
 * Operator callbacks and the help path are not copied; an expression that does not parse in the
 * copy is omitted. */
ORL_API EC ORLCopyEC(EC ec);
/* Keeps a help path of at most 519 bytes (a longer one is ignored) and a help context. */
ORL_API void ORLSetHelpPath(EC ec, const char *path, int32_t helpContext);
/* Sets how dates are written in extended text, as in "DATE '%s'": templates with one "%s" each for
 * dates, dates with time and times. A null template keeps the current one; `convertFlags` are
 * ORL_CONVERT_... and always replace the current ones. Call it before ORLSetDatePicture, which
 * measures the templates. */
ORL_API void ORLSetDateConvert(EC ec, const char *template1, const char *template2,
                               const char *template3, uint16_t convertFlags);
/* Sets the date pictures for dates, dates with time and times; null or empty clears one. Returns
 * 1. */
ORL_API int32_t ORLSetDatePicture(EC ec, const char *picture1, const char *picture2,
                                  const char *picture3);
/* Set the routines of the editor, null for none. With the first the editor lists values and has
 * modes for ranges and sets; without the second users cannot delete. */
ORL_API void ORLSetListValuesCallback(EC ec, OrlListValuesProc proc);
ORL_API void ORLSetDelPermissionCallback(EC ec, OrlDelPermissionProc proc);
/* A value for the host's own use; the setter returns the previous one. 0 for a null context. */
ORL_API intptr_t ORLSetUserLong(EC ec, intptr_t value);
ORL_API intptr_t ORLGetUserLong(EC ec);
/* Deletes all input items, used or not; 0 when there never was one, else 1. */
ORL_API int32_t ORLDeleteAllECVars(EC ec);

/* ---- Items ----------------------------------------------------------------------------------- */

/* Adds a copy of the record, with its parameter records, after the rows of its kind. 1, or 0 for a
 * null context, an invalid kind or when out of memory. Names are not compared: lookups find the
 * first. */
ORL_API int32_t ORLAddExpressionItem(EC ec, const ExprItem *row);
/* Calls `proc` for each row of the kind in order. `proc` must not add or delete rows. */
ORL_API void ORLEnumExpItems(EC ec, int32_t kind, OrlEnumItemProc proc, void *user);
/* Copies the first row of exactly that name to *row, and after it at most `parameters` of its
 * parameter records (ORL_EXPR_ITEM_WITH has space for them): a function has `paramCount` of them,
 * or one where that is negative, other kinds none. 1, or 0 with *row unchanged when there is no
 * such row, and for a null argument or an invalid kind. `routineName` of the copy belongs to the
 * context and is valid as long as the row exists. */
ORL_API int32_t ORLGetExpressionItem(EC ec, int32_t kind, const char *name, ExprItem *row,
                                     int32_t parameters);
/* Deletes the first row of that name, used or not; 1 or 0. */
ORL_API int32_t ORLDelExpItemNoCheck(EC ec, int32_t kind, const char *name);
/* Deletes an input item (kind 1) or function (any other kind) after `proc` has destroyed every
 * expression that uses it, users first. 0 when `proc` returned 0 or did not destroy an expression;
 * then the row is kept. 1 when there is no such row. `proc` may destroy expressions. */
ORL_API int32_t ORLDeleteExpItem(EC ec, int32_t kind, const char *name, OrlDeleteProc proc);
/* Adds the names of the kind in order to a combo box, if there is a window system; returns their
 * number. */
ORL_API int32_t ORLLoadComboBox(EC ec, int32_t kind, void *comboHandle);

/* ---- Expressions ----------------------------------------------------------------------------- */

/* The number of expressions; 0 for a null context. */
ORL_API int32_t ORLGetExpressionCount(EC ec);
/* Calls `proc` for each expression in order until it returns 0; returns its last result. */
ORL_API int32_t ORLEnumExpressions(EC ec, OrlEnumExpressionProc proc);
/* The first expression of exactly that name; the expression at that index. Null when there is
 * none. */
ORL_API HEXP ORLHEXPFromName(EC ec, const char *name);
ORL_API HEXP ORLHEXPFromOrdinal(EC ec, int32_t ordinal);
/* The present index of an expression, or -1. */
ORL_API int32_t ORLGetExpressionOrdinal(EC ec, HEXP exp);
/* Text and name: their length in bytes, and a copy of at most `size` bytes (at least 1), always
 * terminated. The copying routines return the length, or `size` when the text was truncated. */
ORL_API int32_t ORLGetExpressionTextLength(EC ec, HEXP exp);
ORL_API int32_t ORLGetExpressionText(EC ec, HEXP exp, int32_t size, char *buffer);
ORL_API int32_t ORLGetExpressionNameLength(EC ec, HEXP exp);
ORL_API int32_t ORLGetExpressionName(EC ec, HEXP exp, int32_t size, char *buffer);
/* 1 when the name has the form of a generated formula name ("Formula", "Formula12"). */
ORL_API int32_t ORLIsExpNameGenerated(EC ec, HEXP exp);
/* 1 when no function and no expression but `exp` (may be null) has the name. */
ORL_API int32_t ORLIsExpNameUnique(EC ec, HEXP exp, const char *name);
/* Parses the text of `exp` again into a new expression; a name that is null, empty or taken is
 * replaced by a generated one. *dataType receives the type. Null when the text does not parse. */
ORL_API HEXP ORLCloneExpression(EC ec, HEXP exp, const char *newName, uint16_t *dataType);
/* 1 when the expression is destroyed (also for null), 0 when another one refers to it or it is not
 * in this context. */
ORL_API int32_t ORLDestroyEXP(EC ec, HEXP exp);
/* 1 when `which` is 1 and the expression is a set, or `which` is 2 and it is a range. */
ORL_API int32_t ORLIsExpRange(EC ec, HEXP exp, int16_t which);
/* 1 when the expression is a single literal; when it is a single input item or keyword. */
ORL_API int32_t ORLIsExpressionSimple(EC ec, HEXP exp);
ORL_API int32_t ORLIsExpressionSimpleInput(EC ec, HEXP exp);
/* The subClass of the input item that is the whole expression, or -1. */
ORL_API int16_t ORLGetSimpleInputSubClass(EC ec, HEXP exp);
/* The data type, or 65535 for null. */
ORL_API uint16_t ORLGetExpressionDataType(EC ec, HEXP exp);

/* ---- Parsing --------------------------------------------------------------------------------- */

/* 1 when the text can be the name of an expression. A null context has the default settings.
 * *error, when given, receives (108, 0, length of the name) in both cases. */
ORL_API int32_t ORLValidName(EC ec, const char *name, FormulaError *error);
/* Parses and checks a text and stores it as a new expression; null on failure, with the reason in
 * *error (may be null). A null or empty name is replaced by a generated one; the name is not
 * compared with others. *dataType (not null) receives the type. After success *error is
 * unspecified. For a null context or dataType *error receives message 106. */
ORL_API HEXP ORLParseString(EC ec, const char *text, const char *name, FormulaError *error,
                            uint16_t *dataType);
/* As ORLParseString, but the name must be unique, and with an `exp` that expression receives the
 * text in place: its handle stays. A formula in use keeps its type. On failure `exp` is
 * unchanged. */
ORL_API HEXP ORLParseFormula(EC ec, HEXP exp, const char *text, const char *name,
                             FormulaError *error, uint16_t *dataType);
/* A formula that is to be parsed. */
typedef struct OrlFormulaText {
  const char *text, *name; /* a null text is empty; a null or empty name is generated */
} OrlFormulaText;
/* Parses `count` formulas as ORLParseString does. They may call each other in any order; each is
 * stored after those that it calls, so that ORLCopyEC can copy them. 1 when all are parsed. The
 * first that does not parse ends the call with 0: *wrong (may be null) receives its index and
 * *error (may be null) the reason. Where formulas call each other in a cycle, that is
 * ORL_ERR_RECURSIVE with offset and length 0, for one that is in the cycle or calls into it. Out of
 * memory may be reported as -1 and ORL_ERR_MEMORY instead of an index. Formulas parsed before the
 * failure are kept. */
ORL_API int32_t ORLParseFormulas(EC ec, int32_t count, const OrlFormulaText *formulas,
                                 int32_t *wrong, FormulaError *error);
/* Copies a name of at most 64 bytes to `target` (66 bytes), with "_" before it when it is a date
 * unit word; 1 in that case, else 0. A null source is the empty name; for a null target nothing is
 * copied.
 */
ORL_API int32_t ORLInputNameIsKeyword(char *target, const char *source);

/* ---- Evaluation ------------------------------------------------------------------------------ */

/* Computes an expression. Number and Date: 13 bytes are written to `buffer`. String: the string
 * with its terminator, at most `size` bytes; a truncated one has no terminator. With `size` 0 the
 * int32_t at `buffer` receives the bytes that the string needs. 1, or 0 when there is no value;
 * then nothing is written. */
ORL_API int32_t ORLEvaluateExpression(EC ec, HEXP exp, int32_t size, void *buffer);
/* As above, into a block of ORLMemAlloc at *buffer. String: for a null *buffer a block is
 * allocated, one that is too small is enlarged, and *length receives the bytes of the string with
 * its terminator, truncated to 16 bits. The host frees the block with ORLMemFree. */
ORL_API int32_t ORLEvaluateExpressionExt(EC ec, HEXP exp, int32_t *length, void **buffer);
/* Sets the host routine of an operator (0 +, 1 -, 2 /, 3 *, 4 ||) for a data type 0 to 3 of the
 * left operand, by its name. 1, or 0 for a null context; when out of memory for the name the
 * context is destroyed and the result is 0. */
ORL_API int32_t ORLSetOperatorCallback(EC ec, int16_t op, int16_t dataType, const char *name);

/* ---- Many rows at once ----------------------------------------------------------------------- */

/* Forms of columns, with the layout of Arrow arrays: elements one after the other, aligned as their
 * C type (DECIMAL128 by 8 bytes), and one bit for each row: whether it has a value. */
enum {
  ORL_COLUMN_NUMBER = 0,     /* NumberValue[rows]: numbers or dates */
  ORL_COLUMN_INT64 = 1,      /* int64_t[rows], value / 10^scale */
  ORL_COLUMN_DECIMAL128 = 2, /* __int128[rows], 16 bytes, little endian, value / 10^scale */
  ORL_COLUMN_DOUBLE = 3,     /* double[rows], as WRENNumFromDouble and WRENNumToDouble */
  ORL_COLUMN_DATE32 = 4,     /* int32_t[rows], days since 1970-01-01 */
  ORL_COLUMN_TIMESTAMP = 5,  /* int64_t[rows], microseconds since 1970-01-01 00:00 */
  ORL_COLUMN_TEXT = 6        /* bytes of all rows without terminators, and int32_t offsets[rows + 1]
                                that ascend: row r is the bytes from offset r to offset r + 1, up to
                                the first zero byte */
};

/* The values of an input item for all rows. NUMBER, INT64, DECIMAL128 and DOUBLE are for items of
 * type Number, NUMBER, DATE32 and TIMESTAMP for those of type Date, TEXT for those of type String;
 * items of a host's own types have no columns. A null NumberValue, a double that is not finite and
 * a day outside the calendar (years 1 to 9999) are null values; a DECIMAL128 of more than 26 digits
 * is rounded to them. */
typedef struct {
  const char *name;       /* of the input item */
  int32_t form, scale;    /* ORL_COLUMN_...; scale of INT64 and DECIMAL128, 0 to 37 */
  const void *values;     /* may be null when there are no rows or bytes */
  const int32_t *offsets; /* TEXT: rows + 1 elements; other forms: not used */
  const uint8_t *valid;   /* bit r % 8 of byte r / 8 is 1 when row r has a value; null: all have */
} OrlColumn;

/* The results of a formula for all rows: forms fit its type as those of columns fit an item's.
 * INT64 and DECIMAL128 are rounded half away from zero to `scale`, DATE32 is the day of the date. A
 * null value, or one that the form cannot hold, counts as missing; only NUMBER holds null values.
 * The elements of rows without a value are zero bytes, their strings empty. */
typedef struct {
  int32_t form, scale; /* what the host wants */
  void *values;        /* the host's, `rows` elements; TEXT: null, and receives a block of
                          ORLMemAlloc, which the host frees with ORLMemFree */
  int32_t *offsets;    /* TEXT: the host's, rows + 1 elements, the first of which becomes 0; other
                          forms: not used */
  uint8_t *valid;      /* the host's, (rows + 7) / 8 bytes; null: not wanted */
} OrlRowResults;

/* Computes an expression for `rows` rows at once. Each row's result is that of
 * ORLEvaluateExpression with value routines that return the elements of the columns, and fail where
 * a row has no value. Input items without a column, functions of the host and operator callbacks
 * are called as there, row by row in ascending order; a routine that fails or throws, and a value
 * that cannot be computed, leave that one row without a value. A row of ORL_COLUMN_NUMBER or _TEXT
 * has a value exactly where ORLEvaluateExpression returns 1.
 *
 * Columns and results belong to the host, are used only during the call and must not overlap.
 * Columns of items that the expression does not use are allowed. As everywhere a context belongs to
 * one thread at a time: to use several threads, give each a context of its own (see ORLCopyEC) and
 * a part of the rows.
 *
 * Returns the number of rows with a value, 0 or more, or -1 with nothing written and no block
 * allocated: for a null context, expression or record, negative counts, a missing buffer, a TEXT
 * result whose `values` is not null, an unknown form or scale, a column without an item of that
 * name, with a form that does not fit its item or in addition to another one of the same item,
 * offsets that descend or begin below 0, a form that does not fit the expression; for strings of
 * more than 2^31 - 1 bytes together; and when out of memory. */
ORL_API int64_t ORLEvaluateRows(EC ec, HEXP exp, int64_t rows, int32_t columnCount,
                                const OrlColumn *columns, OrlRowResults *results);

/* ---- Usage ----------------------------------------------------------------------------------- */

/* 1 when the expression uses the function (0), input item or keyword (1) or named formula (2) of
 * exactly that name, itself or through formulas that it refers to. */
ORL_API int32_t ORLIsItemUsed(EC ec, HEXP exp, int32_t kind, const char *name);
/* 1 when an expression uses the item and is not the item alone. */
ORL_API int32_t ORLIsItemUsedInComplex(EC ec, const char *name);
/* 1 when any expression refers to the named formula. */
ORL_API int32_t ORLIsNamedFormulaUsed(EC ec, const char *name);
/* 1 when the expression calls the function with the bare item as an argument. */
ORL_API int32_t ORLIsFunctionVariableUsed(EC ec, HEXP exp, const char *functionName,
                                          const char *itemName);
/* 1 when the row has a parameter that is passed by name. */
ORL_API int32_t ORLIsItemAggregate(EC ec, int32_t kind, const char *name);
/* 1 when the expression calls a function that has such a parameter. */
ORL_API int32_t ORLIsAggregateUsed(EC ec, HEXP exp);

/* ---- Extended text --------------------------------------------------------------------------- */

/* The text of an expression made self-contained: each reference to a named formula becomes that
 * formula's text in parentheses, at every depth. With marks, calls of functions whose `itemFlags`
 * have ORL_FUNC_ESCAPE are in the ODBC escape " {fn F() } ", and dates by the pictures and
 * templates of the context; formulas that are spliced in are marked only in a context with date
 * pictures. A text with a formula spliced in has at most 65,535 bytes. */

/* The most bytes that the text can take, without its terminator; 0 for a null expression. Dates are
 * measured by the pictures and templates at the last call of ORLSetDatePicture: set the templates
 * first. */
ORL_API int32_t ORLGetExtendedTextLength(EC ec, HEXP exp, int32_t withMarks);
/* Writes the text to `buffer` of `size` bytes, at least 1, truncated if it is longer. Returns the
 * number of bytes written minus 1: -1 for an empty text. 0 with an empty `buffer` on failure: the
 * text is too long, or formulas refer to each other in a cycle. */
ORL_API int32_t ORLGetExtendedText(EC ec, HEXP exp, int32_t size, char *buffer, int32_t withMarks);

/* ---- Rename ---------------------------------------------------------------------------------- */

/* Renames an input item (a kind other than 0) or a function (0); the name has at most 64 bytes.
 * Formulas are updated: each word outside double quotes that is the old name in any case is
 * replaced in their texts, and in their trees. Returns 0, also for success and an unknown name.
 * When out of memory a formula is left unchanged. */
ORL_API int32_t ORLRenameExpressionItem(EC ec, int32_t kind, const char *oldName,
                                        const char *newName);

/* ---- Stored form ----------------------------------------------------------------------------- */

/* A context can be written to a flat block, which docs/block-format.md describes, and read back
 * into a new one: operator names, input items, and optionally the formulas, ranges and sets. The
 * host stores the bytes. Functions, keywords and settings are not stored. */

/* The bytes that ORLGetECBlock needs, with the formulas or without; 1 for a null context. */
ORL_API int32_t ORLGetECBlockSize(EC ec, int32_t includeFormulas);
/* Writes the block to the host's `buffer` of `capacity` bytes, at least 1, and returns the bytes
 * that were written. What does not fit is left out, and the block is then unusable, unless
 * `capacity` is the size without formulas. Readers accept at most 32,767 input items and as many
 * formulas: from a block with more they read none. */
ORL_API int32_t ORLGetECBlock(EC ec, int32_t capacity, void *buffer);
/* Reads a block of `size` bytes into a context that has its functions and keywords and nothing
 * else. Routines are looked up again by their names, formulas parsed again; `loadFormulas` 0 leaves
 * the formulas out. A formula that no longer parses opens the formula editor; in blocks of the
 * versions 0 and 1 it ends the load. `errorProc`, which may be null, receives the formula that
 * ended the load. The block is not kept. 1 when everything was read, else 0; then the context holds
 * what was read before, and should be destroyed. */
ORL_API int32_t ORLSetECContents(EC ec, int32_t size, const void *block, int32_t loadFormulas,
                                 OrlErrorProc errorProc);

/* ---- Formula editor -------------------------------------------------------------------------- */

/* Let the user write a formula, range or set over `parentWindow`, or change `exp`; typing ends at
 * `textLimit` bytes (0: no limit of its own). `type` is 1 to begin with a set, 2 with a range, else
 * with a formula; `itemName` is an input item or keyword whose values are listed at the start, or
 * null. Return the stored expression, or null when the user cancelled, when no dialog could be
 * opened, and while an editor is open on this thread. Expressions that were saved meanwhile remain
 * stored. */
ORL_API HEXP ORLBuildExpression(void *parentWindow, EC ec, HEXP exp, uint16_t textLimit);
ORL_API HEXP ORLBuildExpressionOfType(void *parentWindow, EC ec, HEXP exp, uint16_t textLimit,
                                      int32_t type, const char *itemName);
/* Shows a text with its error span selected, and the message. 1 when the user has closed it, -1
 * when there is no window system to show it. */
ORL_API int32_t ORLErrorDisplay(void *parentWindow, const char *text, const FormulaError *error);
/* Writes the message of an error id, as that box shows it, to `buffer`, truncated to `size` bytes
 * with its terminator. Returns the bytes of the whole message without terminator, whatever was
 * written; 0, and the empty string, for an id without a message. The buffer may be null when `size`
 * is 0. */
ORL_API int32_t ORLErrorText(int32_t id, int32_t size, char *buffer);

/* The procedures of the editor's windows, for window systems: of the dialog, and of its controls.
 * They do nothing, and return 0, while no editor is open on this thread. */
ORL_API intptr_t OrlDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t EditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t StatusSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t LBFormsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t LBVarsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t LBFuncsSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);

/* The procedures of the text view, the values dialog and the error box, and those called before
 * their edits, for the window system. */
ORL_API intptr_t OrlViewTextDlgProc(void *window, uint32_t message, uintptr_t wParam,
                                    intptr_t lParam);
ORL_API intptr_t ViewEditSubProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t OrlListValuesDlgProc(void *window, uint32_t message, uintptr_t wParam,
                                      intptr_t lParam);
ORL_API intptr_t ORLErrorDlgProc(void *window, uint32_t message, uintptr_t wParam, intptr_t lParam);
ORL_API intptr_t ORLErrorEditProc(void *window, uint32_t message, uintptr_t wParam,
                                  intptr_t lParam);

/* ---- Function library ------------------------------------------------------------------------ */

/* Adds the built-in functions to a context; 1, or 0 on failure, when rows already added are
 * kept. */
ORL_API int32_t FUNDefineFunctions(EC ec);
/* The handle of the module; not null once the library is loaded. */
ORL_API void *FUNModuleHandle(void);
/* Kept for compatibility; has no effect. WRENSetCountry changes the settings. */
ORL_API void FUNWinIniChange(void);
/* For function and value routines of a host: stores a string in the result block, enlarging it when
 * the string does not fit into resultSize bytes. 1, or 0 when out of memory. */
ORL_API int32_t FUNStrVarResult(void **result, int32_t resultSize, const char *text);

/* The built-in functions, each an OrlFunctionProc, in the order of a context's function table.
 * docs/functions.md describes their arguments and results. A host may call them by itself, with
 * `result` pointing to a block of WRENMemAlloc: 13 bytes for a Number or Date, any size for a text.
 * Each returns 1, or 0 with the block still valid when the result is too long or when out of
 * memory. */
#define ORL_FUNCTION_ROUTINE(name)                                         \
  ORL_API int32_t name(EC ec, HEXP exp, int32_t resultSize, void **result, \
                       const char *functionName, void **args)
ORL_FUNCTION_ROUTINE(FUNDateAddDay);
ORL_FUNCTION_ROUTINE(FUNDateYear);
ORL_FUNCTION_ROUTINE(FUNDateMonth);
ORL_FUNCTION_ROUTINE(FUNDateDay);
ORL_FUNCTION_ROUTINE(FUNDateHour);
ORL_FUNCTION_ROUTINE(FUNDateMinute);
ORL_FUNCTION_ROUTINE(FUNDateSecond);
ORL_FUNCTION_ROUTINE(FUNDateMonthBegin);
ORL_FUNCTION_ROUTINE(FUNDateMonthEnd);
ORL_FUNCTION_ROUTINE(FUNDateToStr);
ORL_FUNCTION_ROUTINE(FUNDateConstruct);
ORL_FUNCTION_ROUTINE(FUNStrMid);
ORL_FUNCTION_ROUTINE(FUNStrRight);
ORL_FUNCTION_ROUTINE(FUNStrLeft);
ORL_FUNCTION_ROUTINE(FUNStrLength);
ORL_FUNCTION_ROUTINE(FUNStrRTrim);
ORL_FUNCTION_ROUTINE(FUNStrLTrim);
ORL_FUNCTION_ROUTINE(FUNStrRepeat);
ORL_FUNCTION_ROUTINE(FUNStrPad);
ORL_FUNCTION_ROUTINE(FUNStrCompare);
ORL_FUNCTION_ROUTINE(FUNStrIFF);
ORL_FUNCTION_ROUTINE(FUNStrCase);
ORL_FUNCTION_ROUTINE(FUNStrProper);
ORL_FUNCTION_ROUTINE(FUNStrReplace);
ORL_FUNCTION_ROUTINE(FUNStrScan);
ORL_FUNCTION_ROUTINE(FUNStrSpaces);
ORL_FUNCTION_ROUTINE(FUNStrToDate);
ORL_FUNCTION_ROUTINE(FUNStrToNumber);
ORL_FUNCTION_ROUTINE(FUNStrUpper);
ORL_FUNCTION_ROUTINE(FUNNumberAbsolute);
ORL_FUNCTION_ROUTINE(FUNNumberMod);
ORL_FUNCTION_ROUTINE(FUNNumberToStr);
ORL_FUNCTION_ROUTINE(FUNNumberToCurrency);
ORL_FUNCTION_ROUTINE(FUNNumberCountryFmt);
ORL_FUNCTION_ROUTINE(FUNNumberRound);
ORL_FUNCTION_ROUTINE(FUNNumberTruncate);
ORL_FUNCTION_ROUTINE(FUNStrLower);
ORL_FUNCTION_ROUTINE(FUNNumberIFF);
ORL_FUNCTION_ROUTINE(FUNDateIFF);
ORL_FUNCTION_ROUTINE(FUNDateToStrPicture);
ORL_FUNCTION_ROUTINE(FUNNumberToStrPicture);
ORL_FUNCTION_ROUTINE(FUNStrTrim);
ORL_FUNCTION_ROUTINE(FUNStrTranslate);
ORL_FUNCTION_ROUTINE(FUNPower);
ORL_FUNCTION_ROUTINE(FUNWeekDay);
ORL_FUNCTION_ROUTINE(FUNDateQuarter);

/* Called when a process unloads the library; does nothing. Returns 1. */
ORL_API int32_t WEP(int32_t code);

#ifdef __cplusplus
}
#endif

#endif
