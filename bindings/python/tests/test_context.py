"""Contexts, formulas and single rows."""

import datetime
import decimal
import fractions
import pickle
import random
import threading

import block_format
import numpy
import pandas
import pytest

import orli11
from orli11 import DATE, NUMBER, STRING, Context, FormulaError

D = decimal.Decimal
MOMENT = datetime.datetime(2024, 2, 29, 21, 30, 15, 500)
THREE = {"Amount": NUMBER, "Due": DATE, '"wind speed"': STRING}


@pytest.mark.parametrize("items", [
    {"Amount": "number", "Due": "Date", "wind speed": "string"},
    {"Amount": float, "Due": datetime.date, "wind speed": str},
    [("Amount", D), ("Due", DATE), ("wind speed", STRING)],
    {"Amount": [None, 1], "Due": [MOMENT], "wind speed": ["x"], "other": [1j], "odd": [b""]},
    {"Amount": numpy.zeros(2), "Due": numpy.array(["2024-01-31"], "M8[D]"), "wind speed": numpy.array(["x"])},
    pandas.DataFrame({"Amount": pandas.array([1, None]), "Due": [MOMENT, None], "wind speed": [None, "x"],
                      "gap": pandas.to_timedelta([1, 2]), 5: [1, 2]}),
    pandas.DataFrame({"Amount": [True], "Due": pandas.Series([MOMENT], dtype=object),
                      "wind speed": pandas.Categorical(["x"])}),
], ids=["names", "classes", "pairs", "lists", "arrays", "frame", "objects"])
def test_items_have_the_types_of_their_source(items):
    with Context(items) as context:
        assert context.items == THREE


@pytest.mark.parametrize("name", ["", "a" * 65, "a" * 63 + " ", 'a"b`c', "Amount"])
def test_a_name_that_is_refused_adds_no_item(name):
    context = Context({"Amount": "number"})
    with pytest.raises(ValueError):
        context.add_items({"Fine": "number", name: "number"})
    assert list(context.items) == ["Amount"]


@pytest.mark.parametrize("items, message", [({"a": 3}, "'a': 3"), ("abc", "not 'abc'"), (5, "not 5")])
def test_items_of_no_known_form_raise(items, message):
    with pytest.raises(TypeError, match=message):
        Context(items)


@pytest.mark.parametrize("type, given, expected", [
    (NUMBER, 7, D(7)), (NUMBER, 2**70, D(2**70)), (NUMBER, -2.5, D("-2.5")), (NUMBER, 0.1, D("0.1")),
    (NUMBER, D("12345678901234567890.123456"), D("12345678901234567890.123456")),
    (NUMBER, D("1E+20"), D(10**20)), (NUMBER, True, D(1)), (NUMBER, fractions.Fraction(1, 4), D("0.25")),
    (NUMBER, numpy.int32(-3), D(-3)), (NUMBER, numpy.bool_(True), D(1)), (NUMBER, numpy.float64(0.1), D("0.1")),
    (DATE, MOMENT, MOMENT), (DATE, MOMENT.date(), datetime.datetime(2024, 2, 29)),
    (DATE, pandas.Timestamp(MOMENT), MOMENT), (DATE, numpy.datetime64(MOMENT), MOMENT),
    (DATE, datetime.date(1, 1, 1), datetime.datetime.min), (DATE, datetime.datetime.max, datetime.datetime.max),
    (STRING, "", ""), (STRING, "größer 𝄞 " * 20_000, "größer 𝄞 " * 20_000),
    *((type, none, None) for type in orli11.Type for none in (None, float("nan"), pandas.NaT, pandas.NA, D("sNaN"))),
    (NUMBER, float("inf"), None), (NUMBER, D("1e200"), None),
])
def test_values_are_converted_and_back(type, given, expected):
    with Context({"x": type}) as context:
        assert context.evaluate("x", {"x": given}) == expected


@pytest.mark.parametrize("type, given, error", [
    (NUMBER, "7", TypeError), (NUMBER, 1j, TypeError), (DATE, "2024-01-31", TypeError), (STRING, 7, TypeError),
    (DATE, MOMENT.replace(tzinfo=datetime.timezone.utc), ValueError), (STRING, "a\0b", ValueError),
])
def test_values_of_another_type_are_refused(type, given, error):
    with Context({"x": type}) as context:
        with pytest.raises(error):
            context.evaluate("x", {"x": given})
        assert context.evaluate("5") == 5, "the error must not remain"


def test_rows_are_anything_with_keys():
    frame = pandas.DataFrame({"Amount": [1.5], "wind speed": ["strong"]})
    with Context(frame) as context:
        text = context.parse('NumberToStr(Amount, 1) || "wind speed"')
        assert text.evaluate(frame.iloc[0]) == text.evaluate({"Amount": 1.5, "wind speed": "strong"}) == "1.5strong"
        with pytest.raises(KeyError, match="wind speed"):
            text.evaluate({"Amount": 1})
        with pytest.raises(KeyError, match="Amount"):
            text.evaluate()


def test_arithmetic_is_that_of_exact_decimals():
    exact = decimal.Context(prec=26, rounding=decimal.ROUND_HALF_UP)
    draw = random.Random(11)
    with Context({"a": "number", "b": "number"}) as context:
        for sign, compute in (("+", exact.add), ("-", exact.subtract), ("*", exact.multiply), ("/", exact.divide)):
            formula = context.parse(f"a {sign} b")
            for _ in range(200):
                a, b = (D(draw.randint(-10**12, 10**12) or 1).scaleb(-draw.randint(0, 9)) for _ in "ab")
                assert formula.evaluate({"a": a, "b": b}) == compute(a, b), (a, sign, b)


@pytest.mark.parametrize("text, id, span, wrong", [
    ("Amount * Taxes", 102, (9, 5), "Taxes"), ("'größer' || Amount", 115, (14, 6), "Amount"),
    ("Amount *", 109, (8, 1), ""), ("", 109, (0, 1), ""),
])
def test_an_error_has_its_place_and_message(text, id, span, wrong):
    with Context({"Amount": "number"}) as context:
        with pytest.raises(FormulaError) as caught:
            context.check(text)
        error = pickle.loads(pickle.dumps(caught.value))
        assert (error.id, error.offset, error.length, error.text) == (id, *span, text)
        assert text[error.start:error.end] == wrong
        assert error.message in str(error) and error.message.startswith("ERR_")
        assert list(context) == []


def test_check_returns_the_type_and_stores_nothing():
    with Context({"Amount": "number", "Due": "date"}) as context:
        assert [context.check(text) for text in ("Amount", "Due + 1 DAY", "'x'")] == [NUMBER, DATE, STRING]
        kinds = [context.parse(text, f"n{i}").kind for i, text in enumerate(("1", "1 AND 2", "1, 2"))]
        assert kinds == ["formula", "range", "set"]
        with pytest.raises(TypeError):
            context.evaluate("1 AND 2")
        with pytest.raises(FormulaError):
            context.parse("2", "n0")


def test_functions_written_in_python():
    seen = []

    def kinds(a: int, b: float, c: D, d: datetime.date, e: datetime.datetime, f: str) -> str:
        seen.append((a, b, c, d, e, f))
        return "done"

    def total(column: orli11.ItemName, factor: D = D(2)) -> D:
        seen.append(column)
        return factor * 10

    def none(a: D) -> D:
        seen.append(a)

    with Context({"Amount": "number", "Due": "date"}, functions=[kinds, none], built_in=False) as context:
        context.add_function(total)
        context.add_function(lambda *texts: "-".join(texts), "joined", parameters=[str, str], result=str)
        row = {"Amount": D("2.5"), "Due": MOMENT}
        for formula, expected, arguments in (
                ("kinds(Amount, Amount, Amount, Due, Due, 'x')", "done",
                 (2, 2.5, D("2.5"), MOMENT.date(), MOMENT, "x")),
                ("total(Amount) + total(Amount, 3)", 50, "Amount"), ("joined('a', 'b')", "a-b", "Amount"),
                ("none(Amount) + 1", None, D("2.5"))):
            assert context.evaluate(formula, row) == expected, formula
            assert seen[-1] == arguments, formula
        assert context.evaluate("none(Amount)", {"Amount": None}) is None and seen[-1] is None
        with pytest.raises(TypeError, match="parameter 'a'"):
            context.add_function(lambda a: a, "untyped", result=str)
        with pytest.raises(ValueError):
            context.add_function(lambda: 1, "no name", result=int)


def test_exceptions_of_functions_arrive_and_a_context_in_use_is_unchanged():
    with Context({"Amount": "number"}) as context:
        @context.add_function
        def inverse(a: float) -> float:
            return 1 / a

        @context.add_function
        def change(a: float) -> float:
            context.parse("1", "new")

        inner = context.parse("Amount + 1")

        @context.add_function
        def again(a: float) -> D:
            assert [each.name for each in context] == ["named"]
            return inner.evaluate({"Amount": a * 10})

        for text, error in (("inverse(0)", ZeroDivisionError), ("change(0)", RuntimeError)):
            with pytest.raises(error):
                context.evaluate(text)
        assert list(context) == []
        context.parse("1", "named")
        assert context.evaluate("again(Amount) + Amount", {"Amount": 2}) == 23


def test_names_references_and_texts():
    with Context({"high": "number", "low": "number"}) as context:
        made = context.add_formulas({"felt": "mean() - 1", "mean": "(high + low) / 2"})
        felt, mean = made.values()
        assert [each.name for each in context] == ["mean", "felt"], "each follows those that it calls"
        assert context["felt"] is felt and context.users("high") == [mean, felt]
        assert felt.uses("mean", orli11.Kind.FORMULA) and not felt.uses("mean", orli11.Kind.INPUT)
        assert felt.extended_text() == "((high + low) / 2) - 1"
        context.rename("high", "top of day")
        assert mean.text == '("top of day" + low) / 2' and felt.uses("top of day")
        assert felt.evaluate({"top of day": 4, "low": 2}) == 2
        with pytest.raises(orli11.Error):
            mean.remove()
        mean.change("low")
        with pytest.raises(FormulaError):
            mean.change("'text'")
        felt.remove()
        assert repr(felt) == "<Expression, removed>" and [each.text for each in context] == ["low"]
        with pytest.raises(KeyError):
            context["felt"]
        with pytest.raises(FormulaError) as caught:
            context.parse("low", "a b")
        assert str(caught.value).splitlines()[1:] == ["  a b", "  ^^^"]
        for formulas, wrong, id in (({"a": "b()", "b": "low", "d": "lwo", "e": "d()"}, "lwo", 102),
                                    ({"a": "b()", "b": "a()"}, "b()", 125), ({"mean": "1"}, "mean", 126)):
            with pytest.raises(FormulaError) as caught:
                context.add_formulas(formulas)
            assert (caught.value.text, caught.value.id) == (wrong, id), formulas
            assert [each.name for each in context] == ["mean"], "nothing stays of formulas that fail"


def test_formulas_without_a_name_are_removed_with_their_last_reference():
    with Context({"x": "number"}) as context:
        size = len(context.save())
        kept = context.parse("x + 1")
        for _ in range(100):
            context.evaluate("x * 2", {"x": 1})
        assert list(context) == list(context.copy()) == [] and len(context.save()) == size
        assert kept.evaluate({"x": 1}) == 2


BLOCK = block_format.Content([b""] * 20, [block_format.Item(b"Amount"), block_format.Item(b'"a b"', data_type=2)],
                             [(b"Net() * 2", b"Gross"), (b"Amount + 10", b"Net"), (b"1 AND 2", b"Few")])


@pytest.mark.parametrize("version", [2, 3])
def test_load_reads_blocks_of_other_hosts_in_order(version):
    with Context.load(BLOCK.write(version)) as context:
        assert context.items == {"Amount": NUMBER, '"a b"': STRING}
        assert [each.name for each in context] == ["Gross", "Net", "Few"]
        assert context["Gross"].evaluate({"Amount": 1}) == 22
        context.add_function(str.upper, "upper", parameters=[str], result=str)
        context.parse('upper("a b")', "Text")
        with pickle.loads(pickle.dumps(context)) as again:
            assert again["Text"].evaluate({"a b": "x"}) == "X"


def test_load_errors():
    block = block_format.Content([b""] * 20, BLOCK.items, [(b"Net() * 2", b"Gross"), (b"Amont", b"Net")])
    with pytest.raises(orli11.LoadError) as caught:
        Context.load(block.write(3))
    assert (caught.value.name, caught.value.error.id, caught.value.error.text) == ("Net", 102, "Amont")
    with pytest.raises(orli11.LoadError) as caught:
        Context.load(block.write(1))
    assert "Net() * 2" in str(caught.value)
    operators = block_format.Content([b""] * 3 + [b"Add"] + [b""] * 16, BLOCK.items, BLOCK.formulas)
    for version in range(4):
        with pytest.raises(orli11.LoadError, match="operators: Add"):
            Context.load(operators.write(version))
    good = BLOCK.write(3)
    loaded = 0
    for size in range(len(good)):
        try:
            Context.load(good[:size]).close()
            loaded += 1
        except orli11.LoadError:
            pass
    assert loaded < 5, "a context may end after each of its parts"


def test_closed_and_foreign_contexts():
    context, other = Context({"x": "number"}), Context({"x": "number"})
    formula = context.parse("x", "f")
    with pytest.raises(ValueError):
        other.evaluate(formula, {"x": 1})
    context.close()
    context.close()
    for use in (lambda: context.save(), lambda: formula.evaluate({"x": 1}), lambda: formula.text):
        with pytest.raises(orli11.ClosedError):
            use()


def test_threads_share_a_context():
    wrong = []
    with Context({"x": "number"}) as context:
        formula = context.parse("x * 2")

        def work(n):
            for i in range(300):
                if formula.evaluate({"x": n * i}) != 2 * n * i or context.evaluate("x + 1", {"x": i}) != i + 1:
                    wrong.append((n, i))

        threads = [threading.Thread(target=work, args=(n,)) for n in range(4)]
        for each in threads:
            each.start()
        for each in threads:
            each.join()
    assert wrong == []
