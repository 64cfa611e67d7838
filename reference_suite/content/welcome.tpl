^GREETING^ &CustomerName& of &CustomerTown&,
your computer reaches $'SERV','PROV'$ under $'SERV','NUMB'$.
Its settings lie in %ROOT%, and 100%% of them are yours.
<NAME> <VERSION> (<SERIALCODE>)
