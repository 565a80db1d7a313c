# Completion of tessimar-experiment for bash.
_tessimar_experiment() {
  local word="${COMP_WORDS[COMP_CWORD]}" previous="${COMP_WORDS[COMP_CWORD - 1]}"
  # "--out=DIR" arrives as three words.
  if [ "$previous" = = ]; then
    previous="${COMP_WORDS[COMP_CWORD - 2]}"
  elif [ "$word" = = ]; then
    word=
  fi
  case "$previous" in
    --out | --plugins)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    --step)
      mapfile -t COMPREPLY < <(compgen -W "extract rank report" -- "$word")
      return
      ;;
    --segments)
      mapfile -t COMPREPLY < <(compgen -W grid -- "$word")
      return
      ;;
    --features | --concepts | --depth | --seed | --expect | --part)
      return
      ;;
    --truth | --queries | --qrels) ;;
    *)
      if [[ "$word" == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--truth --classes --out --features --plugins --queries --keep-query --depth \
          --concepts --segments --seed --expect --step --part --measure --qrels --quiet -h --help --version" -- "$word")
        return
      fi
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -o filenames -F _tessimar_experiment tessimar-experiment
