"""The part of the C interface that the package uses, as cffi reads it.

The declarations are those of include/orli11/; a test compares each with the headers.
"""

RECORDS = """
typedef struct ExprContext *EC;
typedef struct Expression *HEXP;
typedef struct { uint8_t length; uint8_t payload[12]; } NumberValue;
typedef struct { int32_t month, day, year, hour, minute, second, fraction; } DateTimeParts;
typedef struct { int32_t id, offset, length; } FormulaError;
typedef void *(*OrlLookupProc)(const char *routineName);
typedef int32_t (*OrlRenameProc)(EC ec, const char *oldName, const char *newName);
typedef int32_t (*OrlValueProc)(EC ec, HEXP exp, int32_t size, void **value, const char *name);
typedef int32_t (*OrlFunctionProc)(EC ec, HEXP exp, int32_t resultSize, void **result,
                                   const char *name, void **args);
typedef void (*OrlEnumItemProc)(EC ec, const char *name, void *user);
typedef void (*OrlErrorProc)(EC ec, const char *text, const FormulaError *error);
typedef struct OrlFormulaText {
  const char *text, *name;
} OrlFormulaText;
typedef struct {
  const char *name;
  int32_t form, scale;
  const void *values;
  const int32_t *offsets;
  const uint8_t *valid;
} OrlColumn;
typedef struct {
  int32_t form, scale;
  void *values;
  int32_t *offsets;
  uint8_t *valid;
} OrlRowResults;
"""

# Records without padding.
PACKED_RECORDS = """
typedef char *OrlRoutineName;
typedef struct { uint16_t mode; uint16_t dataType; uint16_t subClass; } ParamRecord;
typedef struct {
  int16_t kind;
  int16_t dataType;
  OrlRoutineName routineName;
  void *routine;
  char name[65];
  int16_t paramCount;
  union { uint16_t firstOptional; uint16_t subClass; uint16_t resultType; };
  union { uint16_t optionalCount; uint16_t caseSensitive; };
  uint16_t itemFlags;
} ExprItem;
typedef struct { ExprItem item; ParamRecord parameters[64]; } FunctionRow;
typedef struct {
  int16_t kind;
  int16_t dataType;
  uint32_t zero[2];
  char name[65];
  int16_t paramCount;
  uint16_t subClass;
  uint16_t optionalCount;
  uint16_t itemFlags;
} OrlStoredInput;
"""

# The layout of stored contexts.
BLOCK = """
enum {
  ORL_BLOCK_VERSION = 3,
  ORL_BLOCK_OPERATORS = 20,
  ORL_BLOCK_TAG_INPUTS = 250,
  ORL_BLOCK_TAG_FORMULAS = 252,
  ORL_BLOCK_HEADER_SIZE = 4,
  ORL_BLOCK_MOST_ROWS = 32767
};
"""

ENGINE = """
uint32_t ORLVersion(void);
void ORLMemFree(void *block);
uint32_t ORLMemSize(const void *block);
EC ORLCreateEC(void *owner, OrlLookupProc lookup, OrlRenameProc rename, uint16_t flags);
int32_t ORLDestroyEC(EC ec);
EC ORLCopyEC(EC ec);
int32_t ORLAddExpressionItem(EC ec, const ExprItem *row);
int32_t ORLGetExpressionItem(EC ec, int32_t kind, const char *name, ExprItem *row,
                             int32_t parameters);
void ORLEnumExpItems(EC ec, int32_t kind, OrlEnumItemProc proc, void *user);
int32_t ORLGetExpressionCount(EC ec);
HEXP ORLHEXPFromName(EC ec, const char *name);
HEXP ORLHEXPFromOrdinal(EC ec, int32_t ordinal);
int32_t ORLGetExpressionTextLength(EC ec, HEXP exp);
int32_t ORLGetExpressionText(EC ec, HEXP exp, int32_t size, char *buffer);
int32_t ORLGetExpressionNameLength(EC ec, HEXP exp);
int32_t ORLGetExpressionName(EC ec, HEXP exp, int32_t size, char *buffer);
int32_t ORLIsExpNameUnique(EC ec, HEXP exp, const char *name);
int32_t ORLDestroyEXP(EC ec, HEXP exp);
int32_t ORLIsExpRange(EC ec, HEXP exp, int16_t which);
uint16_t ORLGetExpressionDataType(EC ec, HEXP exp);
int32_t ORLValidName(EC ec, const char *name, FormulaError *error);
HEXP ORLParseFormula(EC ec, HEXP exp, const char *text, const char *name,
                     FormulaError *error, uint16_t *dataType);
int32_t ORLParseFormulas(EC ec, int32_t count, const OrlFormulaText *formulas,
                         int32_t *wrong, FormulaError *error);
int32_t ORLInputNameIsKeyword(char *target, const char *source);
int32_t ORLEvaluateExpression(EC ec, HEXP exp, int32_t size, void *buffer);
int32_t ORLEvaluateExpressionExt(EC ec, HEXP exp, int32_t *length, void **buffer);
int64_t ORLEvaluateRows(EC ec, HEXP exp, int64_t rows, int32_t columnCount,
                        const OrlColumn *columns, OrlRowResults *results);
int32_t ORLIsItemUsed(EC ec, HEXP exp, int32_t kind, const char *name);
int32_t ORLGetExtendedTextLength(EC ec, HEXP exp, int32_t withMarks);
int32_t ORLGetExtendedText(EC ec, HEXP exp, int32_t size, char *buffer, int32_t withMarks);
int32_t ORLRenameExpressionItem(EC ec, int32_t kind, const char *oldName,
                                const char *newName);
int32_t ORLGetECBlockSize(EC ec, int32_t includeFormulas);
int32_t ORLGetECBlock(EC ec, int32_t capacity, void *buffer);
int32_t ORLSetECContents(EC ec, int32_t size, const void *block, int32_t loadFormulas,
                         OrlErrorProc errorProc);
int32_t ORLErrorText(int32_t id, int32_t size, char *buffer);
int32_t FUNDefineFunctions(EC ec);
int32_t FUNStrVarResult(void **result, int32_t resultSize, const char *text);
"""

TOOLS = """
int32_t WRENSetCodePage(int32_t codePage);
int32_t WRENSetCountry(const char *localeName);
void WRENNumFromLong(NumberValue *result, int64_t source);
void WRENNumFromDouble(NumberValue *result, double source);
void WRENNumFromText(NumberValue *result, const char *source);
int32_t WRENNumToText(const NumberValue *value, int32_t size, char *buffer);
"""

CALENDAR = """
int32_t PAVNDateToNumber(uint8_t *bytes, const DateTimeParts *parts);
void PAVNNumberToDate(const uint8_t *bytes, int32_t length, DateTimeParts *parts);
"""
