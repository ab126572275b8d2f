#!/bin/sh
# sqlite.sh TASK INDIR OUT
match="CAST(quantity AS INTEGER) > 10 AND status = 'shipped'"
order="ORDER BY country, CAST(unit_price AS REAL) DESC"
load=".import --csv '$2/orders.csv' orders"
customers=".import --csv '$2/customers.csv' customers"
case $1 in
T1) sql="SELECT * FROM orders" ;;
T2) sql="SELECT * FROM orders WHERE $match" ;;
T3) sql="SELECT * FROM orders $order" ;;
T4) load="$load
$customers" sql="SELECT * FROM orders JOIN customers USING (customer_id)" ;;
T9) load="$load
$customers" sql="SELECT * FROM orders JOIN customers USING (customer_id) WHERE $match $order" ;;
esac
sqlite3 :memory: >"$3" <<END
$load
.headers on
.mode csv
$sql;
END
