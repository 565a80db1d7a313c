# Completion of tessimar for bash.
_tessimar() {
  local word="${COMP_WORDS[COMP_CWORD]}"
  if [[ "$word" == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "--workspace -h --help --version" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -o filenames -F _tessimar tessimar
