# bash completion for clmctl and boardsim                                 -*- shell-script -*-
#
# Subcommands and options are read from the programs' own help. Here is what their values can be.

# Sets words and cword: the command line up to the cursor, with "=" and ":" in their words, where bash splits them off.
_hwapi_words() {
  local line=${COMP_LINE:0:COMP_POINT} i word
  words=() cword=-1
  for ((i = 0; i <= COMP_CWORD; ++i)); do
    if ((i == 0)) || [[ $line == [[:space:]]* ]]; then
      line=${line#"${line%%[![:space:]]*}"}
      ((++cword))
    fi
    word=${COMP_WORDS[i]}
    ((i == COMP_CWORD)) && word=$line
    line=${line#"$word"}
    words[cword]+=$word
  done
}

# Takes the subcommands below path from the program's help, and adds its options to those of the commands above.
_hwapi_help() {
  local line section=
  subcommands=()
  while IFS= read -r line; do
    if [[ $line != " "* ]]; then
      section=$line
    elif [[ $section == Subcommands: && $line =~ ^"  "([a-z][a-z-]*) ]]; then
      subcommands+=("${BASH_REMATCH[1]}")
    elif [[ $section == Options: && $line =~ ^"  "(-[a-z],)?(--[a-z-]+)(" "[A-Z]+)? ]]; then
      [[ " ${options[*]} " == *" ${BASH_REMATCH[2]} "* ]] || options+=("${BASH_REMATCH[2]}")
      [[ -z ${BASH_REMATCH[3]} ]] || valued+=" ${BASH_REMATCH[2]} "
    fi
  done < <("$program" "${path[@]}" --help 2>/dev/null </dev/null)
}

# Sets what the words before the cursor say: path, arguments (how many follow it), given (values of options), and option
# when the word at the cursor is the value of one.
_hwapi_parse() {
  local i word
  _hwapi_help
  for ((i = 1; i < cword; ++i)); do
    word=${words[i]}
    if [[ $valued == *" $word "* ]]; then
      if ((i + 1 == cword)); then option=$word; else given[$word]=${words[++i]}; fi
    elif [[ $word == --*=* ]]; then
      given[${word%%=*}]=${word#*=}
    elif [[ " ${subcommands[*]} " == *" $word "* ]]; then
      path+=("$word")
      _hwapi_help
    elif [[ $word != -* ]]; then
      ((++arguments))
    fi
  done
  if [[ -z $option && $current == --*=* ]]; then
    option=${current%%=*}
    current=${current#*=}
  fi
}

# Offers the words that begin with the current one: of it, bash replaces what is behind the last "=" or ":".
_hwapi_offer() {
  local word behind=
  [[ $current == *[=:]* && $COMP_WORDBREAKS == *[=:]* ]] && behind=${current%"${current##*[=:]}"}
  for word; do
    [[ $word == "$current"* ]] && COMPREPLY+=("${word#"$behind"}")
  done
  [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
}

# Offers the lines of its input; what would need quotes on a command line is left out.
_hwapi_offer_lines() {
  local lines line plain=()
  mapfile -t lines
  for line in "${lines[@]}"; do
    [[ -z $line || $line == *[!A-Za-z0-9._+%@-]* ]] || plain+=("$line")
  done
  _hwapi_offer "${plain[@]}"
}

# Asks the program, and with it the running board, which may hang.
_hwapi_ask() {
  timeout 2 "$program" "$@" 2>/dev/null </dev/null
}

# Offers the files that end like $1, and folders.
_hwapi_files_named() {
  compopt -o filenames -o plusdirs
  mapfile -t COMPREPLY < <(compgen -f -X "!*$1" -- "$current")
}

# _hwapi_complete VALUES PROGRAM: VALUES is the function that offers what option, or else the next argument, can be; its
# status is 1 when nothing is expected there.
_hwapi_complete() {
  local program=${2/#\~\//$HOME/} words=() cword=0 current
  local path=() subcommands=() options=() valued='' arguments=0 option=''
  local -A given=()
  COMPREPLY=()
  _hwapi_words
  current=${words[cword]}
  _hwapi_parse
  if [[ -z $option && ($current == --* || ($current == -* && ${path[*]} != clock)) ]]; then
    _hwapi_offer "${options[@]}"
  elif [[ -z $option ]] && ((${#subcommands[@]} != 0)); then
    _hwapi_offer "${subcommands[@]}"
  else
    "$1" || [[ -n $option ]] || _hwapi_offer "${options[@]}"
  fi
}

# FAN, and then FAN=VALUE with one of the values.
_clmctl_fans() {
  local fan=${current%%=*}
  if [[ $current == *=* ]]; then
    _hwapi_offer "${@/#/"$fan="}"
  else
    _hwapi_offer {201..203}= GAR_FAN{1..3}=
  fi
}

# The columns of the trace that is drawn, behind those named already.
_clmctl_columns() {
  local file=${given[--file]-} before=''
  [[ $current != *,* ]] || before=${current%,*},
  current=${current#"$before"}
  _hwapi_offer_lines < <(_hwapi_ask blackbox show trace ${file:+--file "${file/#\~\//$HOME/}"} --json |
    sed -n 's/^{"name":"\([^"\\]*\)".*/\1/p')
  COMPREPLY=("${COMPREPLY[@]/#/"$before"}")
  compopt -o nospace
}

_clmctl_values() {
  local tasks=(temperature fan blackbox reset autodet swdl)
  case ${option:-${path[*]} $arguments} in
    --timeout) _hwapi_offer 500ms 1s 2s 10s 1min ;;
    --interval) _hwapi_offer 1s 2s 10s 1min 1h ;;
    --period) _hwapi_offer 8s 20s 1min 2min ;;
    --to | --sender) _hwapi_offer "${tasks[@]}" ;;
    --category) _hwapi_offer_lines < <(_hwapi_ask reset --list | sed -n 's/^category \([^ ]*\).*/\1/p') ;;
    --cpu) _hwapi_offer 0xd4 ;;
    --keep) _hwapi_offer 0 1 2 ;;
    --file | --png | --svg) compopt -o default ;;
    --sensors) _clmctl_columns ;;
    "temp start 0" | "temp stop 0" | "temp watch 0") _hwapi_offer_lines < <(_hwapi_ask temp types | cut -d' ' -f1) ;;
    "fan freq "*) _clmctl_fans 1kHz 5kHz 25kHz ;;
    "fan speed "* | "fan watch "*) _clmctl_fans 0% 20% 40% 60% 80% 100% ;;
    "tag get 0" | "tag set 0" | "tag watch 0") _hwapi_offer_lines < <(ls "${HWAPI_RUN:-/run/hwapi}/tags" 2>/dev/null) ;;
    "tag set 1") ;;
    "techlog collect 0") compopt -o dirnames ;;
    "blackbox show 0") _hwapi_offer board trace config ;;
    "blackbox store-file 0") compopt -o default ;;
    "reset 0") _hwapi_offer_lines < <(_hwapi_ask reset --list | sed -n 's/^type \([^ ]*\).*/\1/p') ;;
    *) return 1 ;;
  esac
}

_clmctl() {
  _hwapi_complete _clmctl_values "$1"
}

# The status of the board that the command line means.
_boardsim_status() {
  local state=${given[--state]-}
  _hwapi_ask status ${state:+--state "${state/#\~\//$HOME/}"}
}

# The lines of the table $1 of that status but those that say $2.
_boardsim_rows() {
  _boardsim_status | sed -n "/^$1 /,/^\$/p" | sed -e 1d -e "/ $2\( \|\$\)/d"
}

# The tags that have a value on that board.
_boardsim_tags() {
  local run
  run=$(_boardsim_status | sed -n 's/^export HWAPI_RUN=//p')
  [[ -z $run ]] || ls "$run/tags" 2>/dev/null
}

_boardsim_values() {
  local resets=({0..16} silent fail= late=)
  case ${option:-${path[*]} $arguments} in
    --state) compopt -o dirnames ;;
    --daemon) compopt -o default ;;
    --partition) _hwapi_offer 1 2 ;;
    --counter) _hwapi_offer 0 7 ;;
    --clock | "clock 0") _hwapi_offer +1h +10min +1d -1h -10min -1d now unset ;;
    "up 0") _hwapi_files_named .toml ;;
    "temp 0") _hwapi_offer_lines < <(_boardsim_rows SENSOR kernel | sed -n 's/^\(0x[0-9a-f]*\).*/\1/p') ;;
    "temp 1") _hwapi_offer auto fail= ;;
    "fan 0") _hwapi_offer_lines < <(_boardsim_rows FAN kernel | sed 's/^[0-9]* *\(GAR_FAN[0-9]\).*/\1/; s/ .*//') ;;
    "fan 1") _hwapi_offer auto rpm= fail= fail-read= fail-write= ;;
    "plug 0") _hwapi_offer Dax{1..3} ;;
    "plug 1") _hwapi_offer basic m p ;;
    "plug 2") _hwapi_offer Ready UnInitialized UnPlugged SwUpgrade Timeout Hiz Sleep Plugged Unknown ;;
    "unplug 0") _hwapi_offer_lines < <(_boardsim_rows SLOT empty | sed 's/ .*//') ;;
    "tag 0") _hwapi_offer_lines < <(_boardsim_tags) ;;
    "tag 1") ;;
    "reset-type 0" | "reset 0") _hwapi_offer "${resets[@]}" ;;
    *) return 1 ;;
  esac
}

_boardsim() {
  _hwapi_complete _boardsim_values "$1"
}

complete -F _clmctl clmctl
complete -F _boardsim boardsim
