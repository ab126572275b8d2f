#!/usr/bin/env python3
"""Write deterministic 'orders' and 'customers' data (standard library only).

    generate.py ROWS OUTDIR [--seed N]

Files: orders.csv and customers.csv. The same ROWS and seed always give the same bytes.
"""
import argparse
import csv
import datetime
import os
import random

CUSTOMERS = 50_000
COLUMNS = ["order_id", "customer_id", "order_date", "due_date", "country", "city", "product",
           "quantity", "unit_price", "discount", "status", "note", "email"]
COUNTRIES = """Argentina Australia Austria Belgium Brazil Canada Chile China Colombia Croatia Czechia Denmark
Egypt Estonia Finland France Germany Greece Hungary India Indonesia Ireland Israel Italy Japan Kenya Mexico Morocco
Netherlands Norway Poland Portugal Romania Singapore Spain Sweden Switzerland Turkey Vietnam Zambia""".split()
STATUS = ["shipped", "pending", "cancelled", "returned", "processing"]
SEGMENTS = ["Retail", "Wholesale", "Public sector", "Online", "Partner, reseller"]
FIRST = """Ada Ben Chloe Dana Élodie Farid Grace Hiro Inès Jonas Karla Liam Maya Noor Otto Priya Quentin Rosa
Søren Tara Uma Viktor Wanda Xavier Yara Zoë""".split()
LAST = """Adams Brown Castro Dubois Evans Fischer García Hansen Ito Jensen Kowalski López Müller Novák Okafor
Petrov Quinn Rossi Schmidt Tanaka Usman Varga Weber Xu Yılmaz Zhang""".split()
SYLLABLES = "ba cor del fen gar hol kin lor mar nes pol ran sol tor ven wick".split()
ADJECTIVES = "Compact Deluxe Heavy Light Modern Oak Plain Rapid Smart Steel".split()
NOUNS = "chair,desk,drill,hose,kettle,lamp,mixer,printer,router,shelf,socket,table,tent,toolbox,valve".split(",")
WORDS = """please deliver before noon leave parcel with neighbour gift wrap requested call customer first fragile
handle carefully invoice separately second floor rear entrance weekend only signature required express""".split()


def products():
    """200 distinct products; some need quoting in CSV."""
    out = []
    for i in range(200):
        text = f"{ADJECTIVES[i % 10]} {NOUNS[i // 10 % 15]} {i}"
        if i % 9 == 0:
            text += ", set of 4"
        if i % 13 == 0:
            text = f'{text} 12" wide'
        out.append(text)
    return out


def orders(rows, seed, chunk=50_000):
    """Yield rows as tuples of texts."""
    rng = random.Random(seed)
    rnd = rng.random
    cities = [(rng.choice(SYLLABLES) + rng.choice(SYLLABLES) + rng.choice(["ton", "berg", "ville", " São", "stad"])
               ).capitalize() + f" {i}" for i in range(500)]
    goods = products()
    start = datetime.date(2019, 1, 1)
    days = [start + datetime.timedelta(n) for n in range(2200)]
    iso = [d.isoformat() for d in days]
    dmy = [f"{d.day}/{d.month}/{d.year}" for d in days]
    price = [f"{n / 100:.2f}" for n in range(100_000)]
    done = 0
    while done < rows:
        n = min(chunk, rows - done)
        first, last = rng.choices(FIRST, k=n), rng.choices(LAST, k=n)
        words = [rng.choices(WORDS, k=n) for _ in range(5)]
        product, status = rng.choices(goods, k=n), rng.choices(STATUS, weights=[50, 20, 10, 8, 12], k=n)
        for i in range(n):
            r = rnd()
            number = done + i + 1
            # Country follows from the city, as it does in real data.
            city = int(rnd() * 500)
            day = int(rnd() * 2150)
            pick = r * 100
            if pick < 15:
                note = ""
            else:
                note = f"{words[0][i]} {words[1][i]} {words[2][i]} {words[3][i]} ref {number * 7919 % 9999991}"
                if pick < 18:
                    note += "\nsecond line: " + words[4][i]
                elif pick < 21:
                    note += f' "{words[4][i]}" said'
                elif pick < 45:
                    note += ", " + words[4][i]
            yield (str(number), f"C{int(rnd() ** 1.5 * CUSTOMERS * 1.04) + 1:06d}", iso[day],
                   dmy[day + 1 + int(r * 40)], COUNTRIES[city % 40], cities[city], product[i],
                   str(1 + int(rnd() * 30)), price[50 + int(rnd() ** 2 * 99_000)],
                   "" if pick % 10 < 6 else str(int(pick % 10 - 5) * 5), status[i], note,
                   f"{first[i].lower()}.{last[i].lower()}{int(r * 1e6)}@example{number % 7}.org")
        done += n


def customers(seed):
    rng = random.Random(seed + 1)
    for i in range(1, CUSTOMERS + 1):
        day = datetime.date(2010, 1, 1) + datetime.timedelta(rng.randrange(4000))
        yield (f"C{i:06d}", f"{rng.choice(FIRST)} {rng.choice(LAST)}", rng.choice(SEGMENTS), day.isoformat(),
               rng.choice(COUNTRIES))


def write_csv(path, header, rows):
    with open(path, "w", encoding="utf-8", newline="") as f:
        out = csv.writer(f, lineterminator="\n")
        out.writerow(header)
        out.writerows(rows)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("rows", type=int)
    ap.add_argument("outdir")
    ap.add_argument("--seed", type=int, default=1)
    a = ap.parse_args()
    os.makedirs(a.outdir, exist_ok=True)
    at = lambda name: os.path.join(a.outdir, name)
    write_csv(at("customers.csv"), ["customer_id", "name", "segment", "signup_date", "home_country"], customers(a.seed))
    write_csv(at("orders.csv"), COLUMNS, orders(a.rows, a.seed))


if __name__ == "__main__":
    main()
