#!/bin/bash
# demo.sh PROGRAM [--edit] - what orli does with data/weather.csv: computes, or opens the formula
# editor. Each command is shown before it runs.
cd "$(dirname "$0")/.." || exit 1
program=$(realpath "$1")
# The C locale, so that the output is the same everywhere.
export LC_ALL=C
# The demo writes its files to a temporary folder with a link to the data.
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
ln -s "$PWD/data" "$folder/data"
cd "$folder" || exit 1

# A word as users type it: NAME='TEXT', in double quotes if it contains single ones.
quoted() {
  local name="" text=$1
  if [[ $1 =~ ^([a-z_]+=)(.*)$ ]]; then
    name=${BASH_REMATCH[1]} text=${BASH_REMATCH[2]}
  fi
  case $text in
    *\'*) text="\"$text\"" ;;
    *[!A-Za-z0-9_./-]*) text="'$text'" ;;
  esac
  printf %s "$name$text"
}

# The command as users type it, one formula per line.
command_of() {
  local shown="" word
  for word in "$@"; do
    if [ "$word" = --formula ]; then shown+=$' \\\n   '; fi
    shown+=" $(quoted "$word")"
  done
  printf '$ orli%s' "$shown"
}

run() {
  echo "$(command_of "$@")"
  "$program" "$@" 2>&1
  echo
}

# A line of the shell, shown unchanged.
run_line() {
  orli() { "$program" "$@"; }
  printf '$ %s\n' "$1"
  eval "$1" 2>&1
}

if [ "${2-}" = --edit ]; then
  # The editor takes all letters, not only ASCII.
  export LC_ALL=C.UTF-8
  run_line "orli edit weather.store data/weather.csv --values weather" || exit
  if [ -e weather.store ]; then
    echo
    run list weather.store
  fi
  exit
fi

run items data/weather.csv
run eval data/weather.csv --limit 5 \
  --formula "reported=date" \
  --formula "weekday=DateToStrPicture(date, 'dddd')" \
  --formula "mean=(temp_max + temp_min) / 2" \
  --formula "fahrenheit=mean() * 9 / 5 + 32" \
  --formula "next_report=date + 7 DAYS" \
  --formula "quarter=DateQuarter(date)" \
  --formula "label=weather || ' in ' || DateToStrPicture(date, 'MMMM yyyy')"
run check data/weather.csv "temp_max - temp_min"
run check data/weather.csv "date + 7 DAYS AND date + 8 DAYS"
run check data/weather.csv "DateYear(date) * 12 + DateMonth(weather)"
run_line "orli define weather.store data/weather.csv \\
    mean='(temp_max + temp_min) / 2' \\
    felt='mean() - wind / 2'"
echo
run rename weather.store temp_max high
run list weather.store
run uses weather.store high
run_line "sed '1s/temp_max/high/' data/weather.csv |
  orli eval - --store weather.store --formula sky=weather --limit 3"
echo
run_line "$(cat <<'END'
orli report data/weather.csv --format csv \
    --by nr='DateMonth(date)' \
    --sum rain='precipitation / 4' \
    --mean dry='NumberIFF(precipitation, 0, 1, 0)' \
    --mean mean='(temp_max + temp_min) / 2' \
    --least low=temp_min --greatest high=temp_max \
    --greatest frost="DateIFF(temp_min, date, StrToDate(''), StrToDate(''))" |
  orli eval - \
    --formula '"month"'="DateToStrPicture(DateConstruct(2012, nr, 1, 0, 0, 0), 'MMMM')" \
    --formula '"rain, mm"'='NumberRound(rain, 0)' \
    --formula '" "'="StrRepeat('=', rain / 10)" \
    --formula '"dry days"'="StrRight(StrSpaces(8) || NumberToStrPicture(dry, '0%'), 8)" \
    --formula '"mean"'="StrRight(StrSpaces(4) || NumberToStrPicture(mean, '0.0'), 4)" \
    --formula '"from, to"'="NumberToStr(low, 0) || ' to ' || NumberToStr(high, 0)" \
    --formula '"last frost"'="StrRight(' ' || DateToStrPicture(frost, 'd MMM yyyy'), 11)" \
    --formula feels="StrProper(StrCase(mean / 6, 'cold,cool,mild,warm')) || ' and ' ||
                     StrIFF(dry - 0.5, 'wet', 'even', 'dry')"
END
)"
