# A document on its way into other languages. Sourced by scripts/demo after demo_storing.bash; uses what
# both have.

# write_xliff FILE TEXT: a source XLIFF of one unit.
write_xliff() {
  cat >"$1" <<XLIFF
<?xml version="1.0" encoding="UTF-8"?>
<xliff version="1.2" xmlns="urn:oasis:names:tc:xliff:document:1.2">
  <file original="chain manual.xml" source-language="en" datatype="xml">
    <body><trans-unit id="1"><source>$2</source></trans-unit></body>
  </file>
</xliff>
XLIFF
}

# linked_source: the version of the source XLIFF that the chain manual is linked to.
linked_source="SELECT m.cad_name || ', ' || x.revision || '.' || x.iteration FROM xliff_links l
  JOIN iterations x ON x.id = l.xliff JOIN masters m ON m.id = x.master
  JOIN iterations d ON d.id = l.document WHERE d.oid = 'D1032'"

# published: what the French translation is marked as.
published="SELECT a.value FROM attributes a JOIN iterations i ON i.id = a.iteration
  WHERE i.oid = 'D1031' AND a.parameter_name = 'ZVK_DD_EXTENDED_DOC_TYPE'"

# How a document gets its source XLIFF, twice, and how its translations come back.
show_translation() {
  local chain='//plm/?id=D1032' welding='//plm/?id=D1028' french source
  local data=$work/data-translation
  next "Start a server with the translation add-on."
  start_server "$work/server-translation" "$root/build/release/simulator/vantry-sim" --port 0 \
    --data "$data"
  printf '[servers]\nplm = %s\n' "$server_url" >"$work/vtdirect/config"

  next "A file that is no XLIFF is not sent."
  printf '<html>Oil the chain.</html>\n' >"$work/chain manual.xlf"
  refused anna xliff put "$chain" "$work/chain manual.xlf" --language en

  next "Send the source XLIFF of the chain manual, its first."
  write_xliff "$work/chain manual.xlf" "Oil the chain."
  run xliff put "$chain" "$work/chain manual.xlf" --language en
  held "$linked_source" "chain manual.xlf, A.1"

  next "Send it again: an iteration of the XLIFF document, linked anew."
  write_xliff "$work/chain manual.xlf" "Oil the chain every month."
  run xliff put "$chain" "$work/chain manual.xlf" --language en
  held "$linked_source" "chain manual.xlf, A.2"
  run xliff source "$chain"
  source=$("$vtdirect" xliff source "$chain" | cut -f 1)
  run get --force "$source" -o "$work/fetched"
  cmp "$work/fetched" "$work/chain manual.xlf" || fail "the server holds another XLIFF than was sent"
  say "   The server holds what was sent, byte for byte."

  next "List the translations of the welding manual, and fetch each."
  run xliff list "$welding"
  run xliff get "$welding" --language de -o "$work/welding.de"
  run xliff get "$welding" --language fr -o "$work/welding.fr"
  cmp "$work/welding.de" "$data/content/10300" || fail "the German text is not the server's"
  cmp "$work/welding.fr" "$data/content/10310" || fail "the French text is not the server's"
  say "   The same bytes as in the server's store."

  next "Publish the French one."
  french=$("$vtdirect" xliff list "$welding" | sed -n 's/^fr\t//p')
  run xliff publish "$french"
  held "$published" "x-raomPublished"

  next "Stop the server."
  stop_server
}
