"""The command report: what it writes for small files, and what it refuses."""

import support
from support import run

SALES = ("place,amount,sold\n"
         "b,1,2024-02-29\n\"a\nx\",,2024-02-29 00:00:00.5\nb,0.1,\nB,-3,1999-12-31\nä,,2024-02-29\n,,\n")


class Report(support.FolderCase):
    def test_groups_and_figures(self):
        rows = (  # file, arguments, lines written
            (SALES, ("--count", "n", "--by", "p=place", "--sum", "s=amount", "--mean", "m=amount",
                     "--least", "f=sold"),
             'n,p,s,m,f|1,,,,|1,ä,,,2024-02-29|1,"a\nx",,,2024-02-29 00:00:00.5|'
             "2,b,1.1,0.55,2024-02-29|1,B,-3,-3,1999-12-31"),
            (SALES, ("--by", "d=sold", "--greatest", "g=amount", "--least=l=g() * l2()", "--mean=l2=2",
                     "--by=w=StrLength(place)"),
             "d,g,l,l2,w|,,0,2,0|,0.1,0.2,2,1|1999-12-31,-3,-6,2,1|2024-02-29,1,0,2,1|"
             "2024-02-29 00:00:00.5,,0,2,3"),
            (SALES, ("--by", '"day"=DateDay(sold) - 30'), "day|-30|-1|1"),
            (SALES, ("--count", "n", "--greatest", "g=sold", "--sum", "s=amount"),
             "n,g,s|6,2024-02-29 00:00:00.5,-1.9"),
            ("a,b\n", ("--count", "n", "--sum", "s=1", "--mean", "m=1"), "n,s,m|0,,"),
            ("a,b\n", ("--by", "g=a", "--count", "n"), "g,n"),
            ("a,b\n1e152,1\n0.1,2\n" + "9e152,3\n" * 2 + "0.2,4\n",
             ("--by", "g=NumberMod(b, 3)", "--sum", "s=a", "--mean", "m=a"),
             "g,s,m|0,,|1,1e152,5e151|2,0.1,0.1"),
            ("a,b\n1,1\n1.0,1\n1e0,1\n", ("--by", "g=a", "--count", "n"), "g,n|1,3"),
            ("a,b\nx,yz\nxy,z\n", ("--by", "g=a", "--by", "h=b"), "g,h|x,yz|xy,z"),
        )
        for content, arguments, lines in rows:
            with self.subTest(arguments=arguments):
                status, output, errors = run("report", self.file(content), "--format", "csv", *arguments)
                self.assertEqual((status, output.decode()),
                                 (0, "".join(line + "\r\n" for line in lines.split("|"))), errors)
                # A sum beyond all numbers is told, one over no values is not.
                self.assertEqual(b"has no value" in errors, "9e152" in content)

    def test_refusals(self):
        path = self.file(SALES)
        help_ = "; orli --help tells more"
        rows = (
            (("--sum", "s=place"), 1, "--sum needs a Number, but s is a String"),
            (("--mean", '"s s"=sold'), 1, "--mean needs a Number, but s s is a Date"),
            (("--least", "s=place"), 1, "--least needs a Number or a Date, but s is a String"),
            (("--by", "g=amount", "--count", "g"), 1, "two formulas have the name g"),
            (("--count", "days"), 1, "days is a date unit word; write it in double quotes"),
            (("--by", "g=amount, 1"), 1, "formula g is a set and has no value"),
            (("--by", "g=amounts"), 1, "formula g: ERR_VAR: Unknown input item.\n  amounts\n  ^^^^^^^"),
            (("--count", "n=1"), 2, "--count takes a name alone, not n=1"),
            (("--by", "amount"), 2, "a formula is given as NAME=TEXT, not as amount"),
            (("--sum",), 2, "--sum needs a value after it" + help_),
            ((), 2, "a report needs --by, --count or another figure" + help_),
        )
        for arguments, status, words in rows:
            with self.subTest(arguments=arguments):
                got, output, errors = run("report", path, *arguments)
                self.assertEqual((got, output, support.without_hint(errors)), (status, b"", f"orli: {words}\n"))
        self.assertEqual(run("report", self.file(""), "--count", "n")[:2], (1, b""))


if __name__ == "__main__":
    support.main()
