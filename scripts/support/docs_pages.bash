# Gets the pages of the documentation ready for doxygen, and looks at what became of them. Sourced by scripts/docs.

# What a page for people on a web site of repositories has and doxygen doesn't know: diagrams, code spans with quotes or
# backslashes in them, headings that are linked to by their words. LABELS are the words of such headings, one a line.
adapt_page() {
  awk -v labels="$1" '
    # Code with a quote, "<", "@" or a backslash in it, which doxygen reads as its own.
    function span(text) {
      if (text !~ /["@<\\\001]/) return "`" text "`"
      gsub(/&/, "\\&amp;", text)
      gsub(/</, "\\&lt;", text)
      gsub(/>/, "\\&gt;", text)
      gsub(/"/, "\\&quot;", text)
      gsub(/[\\@#%*_|]/, "\\\\&", text)
      gsub(/\001/, "\\|", text)
      return "<code>" text "</code>"
    }
    # What is between two "**" is strong, over the end of a line too; doxygen misses it around <code>.
    function strong(text) {
      while (sub(/\*\*/, inside ? "</b>" : "<b>", text)) inside = !inside
      return text
    }
    BEGIN {
      split(labels, list, "\n")
      for (i in list) wanted[list[i]] = 1
    }
    /^```mermaid$/ {diagram = 1}
    diagram {
      if (/^```$/) diagram = 0
      # The boxes of a chart are told as a list, from top to bottom.
      if (match($0, /\["[^"]*"\]/)) print "- " substr($0, RSTART + 2, RLENGTH - 4)
      next
    }
    /^```/ {code = !code}
    code {print; next}
    /^#+ / {
      word = tolower($0)
      gsub(/^#+ |[^a-z0-9 -]/, "", word)
      gsub(/ /, "-", word)
      if (word in wanted) $0 = $0 " {#" word "}"
    }
    {
      # A bar of a table that is no border.
      if (/^\|/) gsub(/\\\|/, "\001")
      # The parts between backticks are in turns text and code. A span that goes on in the next line is left alone.
      count = split($0, part, "`")
      line = strong(part[1])
      for (i = 2; i <= count; i++) {
        if (i % 2 == 0 && count % 2 == 1) {
          line = line span(part[i]) strong(part[++i])
        } else {
          line = line "`" strong(part[i])
        }
      }
      print line
    }'
}

# The words of the headings of PAGE that any page links to, itself included.
linked_headings() {
  {
    grep -hoE "\]\([^)]*$(basename "$1")#[^)]+\)" README.md docs/*.md docs/decisions/*.md || true
    grep -hoE '\]\(#[^)]+\)' "$1" || true
  } | sed 's/.*#//; s/)$//' | sort -u
}

# copy_pages DIRECTORY: the pages with the paths that they have in the sources.
copy_pages() {
  local to=$1 page name
  mkdir -p "$to/docs/decisions" "$to/simulator"
  for page in README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md simulator/README.md docs/*.md docs/decisions/*.md; do
    name=$page
    # Two pages of one name would both be the first one.
    [ "$page" != simulator/README.md ] || name=simulator/vantry-sim.md
    adapt_page "$(linked_headings "$page")" <"$page" |
      sed -E 's,\]\((\.\./)?simulator/README\.md\),](\1simulator/vantry-sim.md),; s,\]\(docs/decisions\),](docs/decisions.md),
              s,\]\([^)#]*#([^)]+)\),](#\1),' >"$to/$name"
  done
  {
    printf '# Decisions\n\n'
    for page in docs/decisions/*.md; do
      printf -- '- [%s](decisions/%s)\n' "$(sed -n '1s/^# //p' "$page")" "$(basename "$page")"
    done
  } >"$to/docs/decisions.md"
  add_programs >>"$to/docs/recipes.md"
}

# The recipes' programs, whole.
add_programs() {
  local program
  while read -r program; do
    printf '\n## %s\n\n```cpp\n' "$program"
    cat "$program"
    printf '```\n'
  done < <(grep -oE '`examples/[a-z_/]+\.cpp`' docs/recipes.md | tr -d '`')
}

# check_site DIRECTORY: every page that a page links to is there, and none loads anything from another machine.
check_site() {
  local site=$1 failed=no page target
  while IFS=$'\t' read -r page target; do
    [ -e "$site/$target" ] || { say "$page: no $target" && failed=yes; }
  done < <(cd "$site" && grep -oE 'href="[^"#]+' ./*.html | sed 's,^\./,,; s/:href="/\t/' | grep -vE $'\t[a-z]+:' | sort -u)
  if grep -nE '<(script|img|link|iframe|object)[^>]*(src|href|data)="(https?:)?//' "$site"/*.html ||
    grep -nE '@import|url\("?(https?:)?//' "$site"/*.css; then
    say "These load something from elsewhere."
    failed=yes
  fi
  for page in architecture known-behaviour requests speed recipes; do
    grep -qi "href=\"md_.*docs_${page//-/_}\.html\"" "$site/index.html" || { say "index.html: no $page" && failed=yes; }
  done
  [ $failed = no ]
}
