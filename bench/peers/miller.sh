#!/bin/sh
# miller.sh TASK INDIR OUT
orders=$2/orders.csv
match='$quantity > 10 && $status == "shipped"'
case $1 in
T1) mlr --csv cat "$orders" ;;
T2) mlr --csv filter "$match" "$orders" ;;
T3) mlr --csv sort -f country -nr unit_price "$orders" ;;
T4) mlr --csv join -j customer_id -f "$2/customers.csv" "$orders" ;;
T9) mlr --csv filter "$match" then join -j customer_id -f "$2/customers.csv" then sort -f country -nr unit_price "$orders" ;;
esac >"$3"
