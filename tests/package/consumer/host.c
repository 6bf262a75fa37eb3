/* A host in C11: an item, a formula over it, and the message of a wrong one. */
#include <orli11.h>
#include <stdio.h>
#include <string.h>

static int32_t Price(EC ec, HEXP exp, int32_t size, void **value, const char *name) {
  (void)ec, (void)exp, (void)size, (void)name;
  WRENNumFromText(*value, "0.1");
  return 1;
}

int main(void) {
  EC ec = ORLCreateEC(NULL, NULL, NULL, 0);
  ExprItem item = {.kind = ORL_INPUT, .dataType = ORL_TYPE_NUMBER, .routine = (void *)Price};
  strcpy(item.name, "Price");
  ORLAddExpressionItem(ec, &item);

  FormulaError error;
  uint16_t type;
  NumberValue value;
  char text[200];
  HEXP exp = ORLParseString(ec, "Price + 0.2", NULL, &error, &type);
  if (ORLEvaluateExpression(ec, exp, sizeof value, &value) == 1) {
    WRENNumToText(&value, sizeof text, text);
    puts(text);
  }
  if (ORLParseString(ec, "Price + Prise", NULL, &error, &type) == NULL) {
    ORLErrorText(error.id, sizeof text, text);
    printf("%d+%d %s\n", error.offset, error.length, text);
  }
  return ORLVersion() >> 16 != ORL_VERSION_MAJOR || !ORLDestroyEC(ec);
}
