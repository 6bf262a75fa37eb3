#!/bin/bash
# demo.sh PROGRAM - what orli does with data/weather.csv. Each command is shown before it runs.
cd "$(dirname "$0")/.." || exit 1
program=$1
# Texts as they come, the same on every machine.
export LC_ALL=C

run() {
  local shown="" word
  for word in "$@"; do
    case $word in
      *[!A-Za-z0-9_./-]*)
        word="'${word//\'/\'\\\'\'}'"
        ;;
    esac
    if [ "$word" = --formula ]; then shown+=$' \\\n    '; fi
    shown+=" $word"
  done
  printf '$ orli%s\n' "$shown"
  "$program" "$@" 2>&1
  echo
}

run items data/weather.csv
run eval data/weather.csv --limit 5 \
  --formula "day=date" \
  --formula "weekday=DateToStrPicture(date, 'dddd')" \
  --formula "mean=(temp_max + temp_min) / 2" \
  --formula "fahrenheit=mean() * 9 / 5 + 32" \
  --formula "next_report=date + 7 DAYS" \
  --formula "quarter=DateQuarter(date)" \
  --formula "label=weather || ' in ' || DateToStrPicture(date, 'MMMM yyyy')"
run eval data/weather.csv --limit 3 \
  --formula "until_new_year=DateConstruct(DateYear(date) + 1, 1, 1, 0, 0, 0) - date" \
  --formula "rain_per_wind=precipitation / wind" \
  --formula "month_end=DateMonthEnd(date)"
run check data/weather.csv "temp_max - temp_min"
run check data/weather.csv "date + 7 DAYS AND date + 8 DAYS"
run check data/weather.csv "DateYear(date) * 12 + DateMonth(weather)"
