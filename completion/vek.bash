# Completion of vek's words. A line: words, "|", and what stands behind them: "@" an interface, "-" something
# that only the user knows, "a/b" one of these.
_vek_words='@WORDS@'

_vek_interfaces() {
  local names
  names=$(vek devmg list 2>/dev/null | awk 'NR > 2 && NF > 1 { print $1 }')
  # What else a name may hold would mean something to the shell.
  { [[ -n $names ]] && echo "$names" || ls /sys/class/net; } | grep -x '[[:alnum:]_.@-]*'
}

_vek() {
  local line=${COMP_LINE:0:COMP_POINT} words current typed known behind
  local -a choices=() given=() wanted=()
  read -ra words <<<"$line"
  [[ $line == *[[:blank:]] ]] && words+=('')
  current=${words[-1]}
  typed="${words[*]:1:${#words[@]}-2}"
  while IFS='|' read -r known behind; do
    if [[ -z $typed || $known == "$typed "* ]]; then
      known=${known#"$typed"}
      known=${known# }
      choices+=("${known%% *}")
    elif [[ "$typed " == "$known "* ]]; then
      read -ra given <<<"${typed#"$known"}"
      read -ra wanted <<<"$behind"
      case ${wanted[${#given[@]}]-} in
        '' | -) ;;
        @) choices+=($(_vek_interfaces)) ;;
        *) choices+=(${wanted[${#given[@]}]//\// }) ;;
      esac
    fi
  done <<<"$_vek_words"
  COMPREPLY=()
  for known in "${choices[@]}"; do
    [[ $known == "$current"* ]] && COMPREPLY+=("$known")
  done
}
complete -F _vek vek
